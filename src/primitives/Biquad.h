#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "primitives/StereoLanes.h"
#include "primitives/UnpairedSine.h"

namespace Quorvan::dsp {

/// Coefficients of a second-order section, divided by a0. The designs are those of R.
/// Bristow-Johnson's "Cookbook formulae for audio EQ biquad filter coefficients", in single
/// precision; w is the corner in radians a sample, alpha is sin w / (2 Q).
struct BiquadCoefficients {
    static BiquadCoefficients LowPass(float w, float alpha) {
        return LowPass(std::cos(w), alpha, 1.0f / (1.0f + alpha));
    }
    static BiquadCoefficients HighPass(float w, float alpha);
    /// Unity below the corner, amplitude squared above; slope is the square root of amplitude over
    /// Q.
    static BiquadCoefficients HighShelf(float w, float amplitude, float slope);
    /// Corner in radians a sample, held below half the rate, behind which a section is unstable.
    /// Corners up to 20 kHz never get there at rates from 41 kHz on.
    static float StableCorner(float hertz, float inverseSampleRate) {
        constexpr float kHighest = 3.0787609f;  // 0.49 of a turn
        return std::min(6.2831855f * hertz * inverseSampleRate, kHighest);
    }
    /// alpha of a Q of 0.7071, by which the passband ends without a peak.
    static float FlatAlpha(float w) { return UnpairedSine(w) * 0.70710355f; }

    /// The low-pass from the cosine of its corner and 1 / (1 + alpha), for callers with cheaper
    /// ways to those.
    static BiquadCoefficients LowPass(float cosine, float alpha, float n) {
        const float b1 = (1.0f - cosine) * n;
        const float b0 = 0.5f * b1;
        return {b0, b1, b0, -2.0f * cosine * n, (1.0f - alpha) * n};
    }

    float b0 = 0.0f, b1 = 0.0f, b2 = 0.0f, a1 = 0.0f, a2 = 0.0f;
};

/// Memory of a section in the first direct form.
struct BiquadState {
    float Tick(const BiquadCoefficients& c, float x) {
        const float y = c.b0 * x + c.b1 * x1 + c.b2 * x2 - c.a1 * y1 - c.a2 * y2;
        x2 = x1;
        x1 = x;
        y2 = y1;
        y1 = y;
        return y;
    }

    float x1 = 0.0f, x2 = 0.0f, y1 = 0.0f, y2 = 0.0f;
};

/// Coefficients of two channels side by side.
struct StereoBiquadCoefficients {
    StereoBiquadCoefficients(const BiquadCoefficients& l, const BiquadCoefficients& r)
        : b0(BothSides(l.b0, r.b0)),
          b1(BothSides(l.b1, r.b1)),
          b2(BothSides(l.b2, r.b2)),
          a1(BothSides(l.a1, r.a1)),
          a2(BothSides(l.a2, r.a2)) {}

    FloatLanes b0, b1, b2, a1, a2;
};

/// One section for each of two channels, which go side by side, with the sums of BiquadState.
class StereoBiquadState {
public:
    void Clear() { x1 = x2 = y1 = y2 = FloatLanes{}; }
    FloatLanes Tick(const StereoBiquadCoefficients& c, FloatLanes x) {
        const FloatLanes y = c.b0 * x + c.b1 * x1 + c.b2 * x2 - c.a1 * y1 - c.a2 * y2;
        x2 = x1;
        x1 = x;
        y2 = y1;
        y1 = y;
        return y;
    }
    void ProcessOne(const BiquadCoefficients& c, uint32_t channel, float* samples, uint32_t count) {
        BiquadState state{x1[channel], x2[channel], y1[channel], y2[channel]};
        for (uint32_t i = 0; i < count; ++i)
            samples[i] = state.Tick(c, samples[i]);
        x1[channel] = state.x1;
        x2[channel] = state.x2;
        y1[channel] = state.y1;
        y2[channel] = state.y2;
    }

private:
    FloatLanes x1{}, x2{}, y1{}, y2{};
};

/// The same with one set of coefficients for both channels.
class StereoBiquad {
public:
    void Clear() { states.Clear(); }
    void Process(const std::array<float*, 2>& samples, uint32_t count) {
        RunInSeries(samples, count, *this);
    }
    void ProcessOne(uint32_t channel, float* samples, uint32_t count) {
        states.ProcessOne(coefficients, channel, samples, count);
    }
    /// first.Process and then second.Process in one go: their recursions overlap.
    static void ProcessInSeries(StereoBiquad& first, StereoBiquad& second,
                                const std::array<float*, 2>& samples, uint32_t count) {
        RunInSeries(samples, count, first, second);
    }

    BiquadCoefficients coefficients;

private:
    /// A section for the length of a loop.
    struct Running {
        explicit Running(const StereoBiquad& section)
            : coefficients(section.coefficients, section.coefficients), states(section.states) {}

        StereoBiquadCoefficients coefficients;
        StereoBiquadState states;
    };

    template <class... Sections>
    static void RunInSeries(const std::array<float*, 2>& samples, uint32_t count,
                            Sections&... sections) {
        std::array<Running, sizeof...(Sections)> local{Running(sections)...};
        MapStereoSamples(samples[0], samples[1], samples[0], samples[1], count,
                         [&local](FloatLanes x) {
                             for (Running& each : local)
                                 x = each.states.Tick(each.coefficients, x);
                             return x;
                         });
        size_t k = 0;
        ((sections.states = local[k++].states), ...);
    }

    StereoBiquadState states;
};

}  // namespace Quorvan::dsp
