#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace Quorvan::Processor {

/// Highest levels inside the processor over its last block, linear, by side; for meters.
struct StagePeaks {
    std::array<float, 2> wet{};       ///< the wet signal behind its volume, ahead of the mix
    std::array<float, 2> feedback{};  ///< what the loop adds to the input

    static float Of(const float* samples, uint32_t frames) {
        float peak = 0.0f;
        for (uint32_t i = 0; i < frames; ++i)
            peak = std::max(peak, std::abs(samples[i]));
        return peak;
    }
};

}  // namespace Quorvan::Processor
