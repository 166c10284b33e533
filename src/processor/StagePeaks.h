#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

namespace Quorvan::Processor {

/// Highest levels inside the processor over its last block, linear, by side; for meters.
struct StagePeaks {
    std::array<float, 2> wet{};       ///< the wet signal behind its volume, ahead of the mix
    std::array<float, 2> feedback{};  ///< what the loop adds to the input

    /// As whole numbers, which order sizes of floats alike and run in vectors.
    static float Of(const float* samples, uint32_t frames) {
        int32_t peak = 0;
        for (uint32_t i = 0; i < frames; ++i)
            peak = std::max(peak, std::bit_cast<int32_t>(samples[i]) & 0x7fffffff);
        return std::bit_cast<float>(peak);
    }
};

}  // namespace Quorvan::Processor
