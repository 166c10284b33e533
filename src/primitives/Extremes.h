#pragma once

#include <cstdint>
#include <cstring>

namespace Quorvan::dsp {

/// Lowest and highest of a row of samples, four side by side. What is no number is passed over.
struct Extremes {
    float lowest = 0.0f, highest = 0.0f;

    /// count from 1.
    static Extremes Of(const float* samples, uint32_t count) {
        Extremes found{samples[0], samples[0]};
        if (count < 2 * kLanes)
            for (uint32_t i = 1; i < count; ++i)
                found.Take(samples[i]);
        else
            found.TakeRow(samples, count);
        return found;
    }

private:
    static constexpr uint32_t kLanes = 4;
    using Lanes = float __attribute__((vector_size(4 * kLanes)));

    void Take(float x) {
        lowest = x < lowest ? x : lowest;
        highest = x > highest ? x : highest;
    }
    void TakeRow(const float* samples, uint32_t count) {
        Lanes low{lowest, lowest, lowest, lowest}, high{highest, highest, highest, highest};
        const auto step = [&](const float* at) {
            Lanes x, y;
            std::memcpy(&x, at, sizeof x);
            std::memcpy(&y, at + kLanes, sizeof y);
            const Lanes lower = x < low ? x : low;
            const Lanes higher = x > high ? x : high;
            low = y < lower ? y : lower;
            high = y > higher ? y : higher;
        };
        const uint32_t whole = count - count % (2 * kLanes);
        for (const float* at = samples; at != samples + whole; at += 2 * kLanes)
            step(at);
        // The last ones with some that have been there before, who change nothing.
        if (whole != count)
            step(samples + count - 2 * kLanes);
        for (uint32_t k = 0; k < kLanes; ++k) {
            Take(low[k]);
            Take(high[k]);
        }
    }
};

}  // namespace Quorvan::dsp
