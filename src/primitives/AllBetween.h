#pragma once

#include <cstdint>

namespace Quorvan::dsp {

/// Whether all of count numbers lie from low to high. Without a jump in the loop, so that it runs
/// in vectors; the numbers and limits are so small that no difference overflows.
inline bool AllBetween(const int32_t* numbers, uint32_t count, int32_t low, int32_t high) {
    int32_t outside = 0;
    for (uint32_t n = 0; n < count; ++n)
        outside |= (numbers[n] - low) | (high - numbers[n]);
    return outside >= 0;
}

}  // namespace Quorvan::dsp
