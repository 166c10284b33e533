#pragma once

#include <cstdint>

#include "primitives/FloatLanes.h"

namespace Quorvan::dsp {

/// Left, right, left, right: for what waits for its own last sample in each of two channels.
inline FloatLanes BothSides(float left, float right) {
    return FloatLanes{left, right, left, right};
}

/// Calls step(samples) for each of count samples of two channels, a multiple of 4; what it answers
/// goes to take(i, four of the left, four of the right), four at a time. The first two lanes count.
template <class Step, class Take>
void ForEachStereoSample(const float* left, const float* right, uint32_t count, const Step& step,
                         const Take& take) {
    for (uint32_t i = 0; i < count; i += 4) {
        const FloatLanes l = LoadLanes(left + i), r = LoadLanes(right + i);
        const FloatLanes early = ZipLower(l, r), late = ZipUpper(l, r);
        const FloatLanes a = step(early);
        const FloatLanes b = step(UpperPairs(early, early));
        const FloatLanes c = step(late);
        const FloatLanes d = step(UpperPairs(late, late));
        const FloatLanes ab = LowerPairs(a, b), cd = LowerPairs(c, d);
        take(i, EvenLanes(ab, cd), OddLanes(ab, cd));
    }
}

}  // namespace Quorvan::dsp
