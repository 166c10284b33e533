#pragma once

#include "primitives/Smoother.h"
#include "support/Test.h"

// Building blocks of plain models: as the formulas have them, without rings and without anything
// worked out ahead. Single precision where the rounding is part of the result.
namespace Quorvan::test {

/// A delay line that forgets nothing.
struct PlainLine {
    std::vector<float> past;

    void Write(float x) { past.push_back(x); }
    /// A delay of 1 is the sample written last.
    float At(int32_t delay) const {
        const auto index = static_cast<int64_t>(past.size()) - delay;
        return index < 0 ? 0.0f : past[static_cast<size_t>(index)];
    }
    /// The curve of the fifth degree through the two samples around, which takes slope and
    /// curvature at both from their neighbours.
    float Polynomial(float delay) const {
        const auto whole = static_cast<int32_t>(std::floor(delay));
        const auto x = static_cast<double>(delay - static_cast<float>(whole));
        const auto at = [&](int32_t back) { return static_cast<double>(At(whole + back)); };
        const double p = at(-1), a = at(0), b = at(1), q = at(2);
        const double slopeA = (b - p) / 2.0, slopeB = (q - a) / 2.0;
        const double curveA = p - 2.0 * a + b, curveB = a - 2.0 * b + q;
        const double c3 =
            10.0 * (b - a) - 6.0 * slopeA - 4.0 * slopeB - 1.5 * curveA + 0.5 * curveB;
        const double c4 = 15.0 * (a - b) + 8.0 * slopeA + 7.0 * slopeB + 1.5 * curveA - curveB;
        const double c5 = 6.0 * (b - a) - 3.0 * (slopeA + slopeB) + 0.5 * (curveB - curveA);
        return static_cast<float>(a +
                                  x * (slopeA + x * (0.5 * curveA + x * (c3 + x * (c4 + x * c5)))));
    }
};

/// A second-order filter with the coefficients of a design.
struct PlainBiquad {
    float w = 0.0f, b0 = 0.0f, b1 = 0.0f, b2 = 0.0f, a1 = 0.0f, a2 = 0.0f;
    float x1 = 0.0f, x2 = 0.0f, y1 = 0.0f, y2 = 0.0f;

    /// At a frequency in hertz, with a Q of the square root of a half.
    void FlatLowPass(float hertz, float rate) {
        const float n = Denominator(hertz, rate);
        b1 = (1.0f - std::cos(w)) * n;
        b0 = b2 = 0.5f * b1;
    }
    void FlatHighPass(float hertz, float rate) {
        const float n = Denominator(hertz, rate);
        b1 = -(1.0f + std::cos(w)) * n;
        b0 = b2 = -0.5f * b1;
    }
    float Denominator(float hertz, float rate) {
        w = 6.2831855f * hertz * (1.0f / rate);
        const float alpha = std::sin(w) * 0.70710355f, n = 1.0f / (1.0f + alpha);
        a1 = -2.0f * std::cos(w) * n;
        a2 = (1.0f - alpha) * n;
        return n;
    }
    float Run(float x) {
        const float y = b0 * x + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
        x2 = x1, x1 = x, y2 = y1, y1 = y;
        return y;
    }
    void Clear() { x1 = x2 = y1 = y2 = 0.0f; }
};

/// A value that a module smooths over its blocks: a one-pole, within 0.7 % of the way after time
/// seconds, towards a straight line that reaches the target at the end of a full block.
struct RampedPole {
    double rate, time, line = 0.0, value = 0.0;

    /// Jumps.
    void Put(double target) { line = value = target; }

    std::vector<double> Run(double target, uint32_t count, uint32_t steps) {
        const double coefficient = 1.0 - std::exp(-5.0 / (time * rate));
        const double from = line;
        std::vector<double> out;
        for (uint32_t i = 1; i <= count; ++i) {
            line = i >= steps ? target : from + (target - from) * i / steps;
            value += (line - value) * coefficient;
            out.push_back(value);
        }
        return out;
    }
};

inline void SetUp(std::initializer_list<dsp::Smoother*> all, float rate, uint32_t stepLength) {
    for (dsp::Smoother* const smoother : all) {
        smoother->sampleRate = static_cast<double>(rate);
        smoother->stepLength = stepLength;
        smoother->UpdateCoefficients();
    }
}

/// The step of a clock's cycle in an order that has run since cycle 0. A turn takes one cycle
/// without moving.
inline int32_t PlainStep(int32_t loop, int32_t cycle, int32_t steps) {
    const int32_t within = cycle % steps;
    const bool down = loop == 1 || (loop == 2 && cycle / steps % 2 == 1);
    return down ? steps - 1 - within : within;
}

/// Of markers by age: the lowest one at or above the position, or the lowest of all, behind the one
/// recorded before it.
template <class Markers>
std::pair<int32_t, int32_t> PlainNeighbours(const Markers& markers, int32_t position) {
    const auto after = std::ranges::min_element(
        markers, {}, [position](int32_t marker) { return std::pair(marker < position, marker); });
    if (*after == position)
        return {position, position};
    return {after == markers.begin() ? markers.back() : *std::prev(after), *after};
}

/// One step of a 32-bit xorshift.
inline uint32_t PlainDraw(uint32_t& x) {
    x ^= x << 13;
    x ^= x >> 17;
    return x ^= x << 5;
}

}  // namespace Quorvan::test
