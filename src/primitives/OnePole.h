#pragma once

#include <cmath>

namespace Quorvan::dsp {

/// Coefficients of a first-order section, b0 + b1/z over 1 + a1/z, in single precision. It runs in
/// the transposed direct form, whose one float of memory the caller keeps.
struct OnePole {
    /// Bilinear, with the corner where it was asked for; hertz below half the rate.
    static OnePole LowPass(float hertz, float sampleRate) {
        const float k = 1.0f / std::tan(3.1415927f * hertz / sampleRate);
        const float n = 1.0f / (k + 1.0f);
        return {n, n, (1.0f - k) * n};
    }
    /// Bilinear without the correction of the corner, which comes out lower as it nears half the
    /// rate.
    static OnePole HighPass(float hertz, float sampleRate) {
        const float k = 0.31830987f / hertz * sampleRate;
        const float n = 1.0f / (k + 1.0f);
        return {k * n, -k * n, (1.0f - k) * n};
    }

    float Tick(float x, float& state) const {
        const float y = x * b0 + state;
        state = x * b1 - y * a1;
        return y;
    }

    float b0 = 1.0f, b1 = 0.0f, a1 = 0.0f;
};

}  // namespace Quorvan::dsp
