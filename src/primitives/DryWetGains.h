#pragma once

#include <algorithm>
#include <cstdint>

namespace Quorvan::dsp {

/// Splits a mix of 0..2 into two gains: both are 1 in the middle, and from there the dry one falls
/// towards 2, the wet one towards 0. mix becomes the wet gain.
inline void SplitDryWet(float* mix, float* dry, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        dry[i] = std::clamp(2.0f - mix[i], 0.0f, 1.0f);
        mix[i] = std::clamp(mix[i], 0.0f, 1.0f);
    }
}

}  // namespace Quorvan::dsp
