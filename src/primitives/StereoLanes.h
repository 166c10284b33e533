#pragma once

#include <cstdint>

#include "primitives/FloatLanes.h"

namespace Quorvan::dsp {

/// Left, right, left, right: for what waits for its own last sample in each of two channels.
inline FloatLanes BothSides(float left, float right) {
    return FloatLanes{left, right, left, right};
}

/// Calls step(samples) for each of count samples of two channels; what it answers goes to
/// take(i, four of the left, four of the right), or, where no four are left, to
/// takeOne(i, left, right). The first two lanes count.
template <class Step, class Take, class TakeOne>
void ForEachStereoSample(const float* left, const float* right, uint32_t count, const Step& step,
                         const Take& take, const TakeOne& takeOne) {
    uint32_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const FloatLanes l = LoadLanes(left + i), r = LoadLanes(right + i);
        const FloatLanes early = ZipLower(l, r), late = ZipUpper(l, r);
        const FloatLanes a = step(early);
        const FloatLanes b = step(UpperPairs(early, early));
        const FloatLanes c = step(late);
        const FloatLanes d = step(UpperPairs(late, late));
        const FloatLanes ab = LowerPairs(a, b), cd = LowerPairs(c, d);
        take(i, EvenLanes(ab, cd), OddLanes(ab, cd));
    }
    for (; i < count; ++i) {
        const FloatLanes y = step(BothSides(left[i], right[i]));
        takeOne(i, y[0], y[1]);
    }
}

/// The same into two buffers, which may be those of the input.
template <class Step>
void MapStereoSamples(const float* left, const float* right, float* outLeft, float* outRight,
                      uint32_t count, const Step& step) {
    ForEachStereoSample(
        left, right, count, step,
        [outLeft, outRight](uint32_t i, FloatLanes l, FloatLanes r) {
            StoreLanes(outLeft + i, l);
            StoreLanes(outRight + i, r);
        },
        [outLeft, outRight](uint32_t i, float l, float r) {
            outLeft[i] = l;
            outRight[i] = r;
        });
}

}  // namespace Quorvan::dsp
