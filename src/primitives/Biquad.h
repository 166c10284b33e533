#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

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

/// One section for each of two channels.
class StereoBiquadState {
public:
    using Both = std::array<BiquadState, 2>;

    const Both& Get() const { return states; }
    void Set(const Both& both) { states = both; }
    void Clear() { states = {}; }

    /// Runs both channels in place, in step, so that their recursions overlap. at(channel, sample)
    /// gives the coefficients.
    template <class At>
    void Process(At at, const std::array<float*, 2>& samples, uint32_t count) {
        BiquadState left = states[0], right = states[1];
        float* const l = samples[0];
        float* const r = samples[1];
        for (uint32_t i = 0; i < count; ++i) {
            l[i] = left.Tick(at(0, i), l[i]);
            r[i] = right.Tick(at(1, i), r[i]);
        }
        states = {left, right};
    }

    void ProcessOne(const BiquadCoefficients& c, uint32_t channel, float* samples, uint32_t count) {
        BiquadState state = states[channel];
        for (uint32_t i = 0; i < count; ++i)
            samples[i] = state.Tick(c, samples[i]);
        states[channel] = state;
    }

private:
    Both states;
};

/// The same with one set of coefficients for both channels.
class StereoBiquad {
public:
    void Clear() { states.Clear(); }
    void Process(const std::array<float*, 2>& samples, uint32_t count) {
        const BiquadCoefficients c = coefficients;
        states.Process([&c](uint32_t, uint32_t) -> const BiquadCoefficients& { return c; }, samples,
                       count);
    }
    void ProcessOne(uint32_t channel, float* samples, uint32_t count) {
        states.ProcessOne(coefficients, channel, samples, count);
    }
    /// first.Process and then second.Process in one go: their recursions overlap too.
    static void ProcessInSeries(StereoBiquad& first, StereoBiquad& second,
                                const std::array<float*, 2>& samples, uint32_t count) {
        const BiquadCoefficients a = first.coefficients, b = second.coefficients;
        StereoBiquadState::Both fromA = first.states.Get(), fromB = second.states.Get();
        float* const l = samples[0];
        float* const r = samples[1];
        for (uint32_t i = 0; i < count; ++i) {
            l[i] = fromB[0].Tick(b, fromA[0].Tick(a, l[i]));
            r[i] = fromB[1].Tick(b, fromA[1].Tick(a, r[i]));
        }
        first.states.Set(fromA);
        second.states.Set(fromB);
    }

    BiquadCoefficients coefficients;

private:
    StereoBiquadState states;
};

}  // namespace Quorvan::dsp
