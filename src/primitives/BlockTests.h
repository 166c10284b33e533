#pragma once

#include <cstdint>

namespace Quorvan::dsp {

/// Whether all of count values, at least one, are equal. Without a jump in the loop, so that it
/// runs in vectors.
inline bool IsConstant(const float* values, uint32_t count) {
    uint32_t different = 0;
    for (uint32_t i = 1; i < count; ++i)
        different += values[i] != values[0] ? 1 : 0;
    return different == 0;
}

}  // namespace Quorvan::dsp
