#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>

namespace Quorvan::dsp {

/// Lowest and highest of a row of samples, four side by side. What is no number is passed over.
struct Extremes {
    float lowest = 0.0f, highest = 0.0f;

    /// count from 1.
    static Extremes Of(const float* samples, uint32_t count) {
        Extremes found{samples[0], samples[0]};
        found.TakeRow(samples, count);
        return found;
    }
    /// Largest size of any sample; 0 for none.
    static float PeakOf(const float* samples, uint32_t count) {
        const uint32_t whole = count - count % (2 * kLanes);
        Lanes high[2]{};
        for (uint32_t i = 0; i < whole; i += 2 * kLanes)
            for (uint32_t half = 0; half < 2; ++half) {
                const Lanes x = SizeOf(samples + i + kLanes * half);
                high[half] = x > high[half] ? x : high[half];
            }
        high[0] = high[1] > high[0] ? high[1] : high[0];
        float peak = 0.0f;
        for (uint32_t k = 0; k < kLanes; ++k)
            peak = high[0][k] > peak ? high[0][k] : peak;
        for (uint32_t i = whole; i < count; ++i)
            peak = std::abs(samples[i]) > peak ? std::abs(samples[i]) : peak;
        return peak;
    }

private:
    static constexpr uint32_t kLanes = 4;
    using Lanes = float __attribute__((vector_size(4 * kLanes)));
    using Bits = int32_t __attribute__((vector_size(4 * kLanes)));

    static Lanes SizeOf(const float* from) {
        constexpr int32_t kAllButSign = 0x7fffffff;
        Bits bits;
        std::memcpy(&bits, from, sizeof bits);
        bits &= Bits{kAllButSign, kAllButSign, kAllButSign, kAllButSign};
        Lanes sizes;
        std::memcpy(&sizes, &bits, sizeof sizes);
        return sizes;
    }

    void Take(float x) {
        lowest = x < lowest ? x : lowest;
        highest = x > highest ? x : highest;
    }
    void TakeRow(const float* samples, uint32_t count) {
        const uint32_t whole = count - count % kLanes;
        Lanes low{lowest, lowest, lowest, lowest}, high{highest, highest, highest, highest};
        for (uint32_t i = 0; i < whole; i += kLanes) {
            Lanes x;
            std::memcpy(&x, samples + i, sizeof x);
            low = x < low ? x : low;
            high = x > high ? x : high;
        }
        for (uint32_t k = 0; k < kLanes; ++k) {
            Take(low[k]);
            Take(high[k]);
        }
        for (uint32_t i = whole; i < count; ++i)
            Take(samples[i]);
    }
};

}  // namespace Quorvan::dsp
