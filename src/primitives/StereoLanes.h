#pragma once

#include <cstdint>
#include <cstring>

namespace Quorvan::dsp {

/// Left, right, left, right: two channels side by side in one vector, for what waits for its own
/// last sample in each.
using StereoLanes = float __attribute__((vector_size(16)));

inline StereoLanes BothSides(float left, float right) {
    return StereoLanes{left, right, left, right};
}

/// Calls step(samples) for each of count samples of two channels, a multiple of 4; what it answers
/// goes to take(i, four of the left, four of the right), four at a time. The first two lanes count.
template <class Step, class Take>
void ForEachStereoSample(const float* left, const float* right, uint32_t count, const Step& step,
                         const Take& take) {
    const auto load = [](const float* from) {
        StereoLanes lanes;
        std::memcpy(&lanes, from, sizeof lanes);
        return lanes;
    };
    const auto upper = [](StereoLanes x) { return __builtin_shufflevector(x, x, 2, 3, 2, 3); };
    for (uint32_t i = 0; i < count; i += 4) {
        const StereoLanes l = load(left + i), r = load(right + i);
        const StereoLanes early = __builtin_shufflevector(l, r, 0, 4, 1, 5);
        const StereoLanes late = __builtin_shufflevector(l, r, 2, 6, 3, 7);
        const StereoLanes a = step(early);
        const StereoLanes b = step(upper(early));
        const StereoLanes c = step(late);
        const StereoLanes d = step(upper(late));
        const StereoLanes ab = __builtin_shufflevector(a, b, 0, 1, 4, 5);
        const StereoLanes cd = __builtin_shufflevector(c, d, 0, 1, 4, 5);
        take(i, __builtin_shufflevector(ab, cd, 0, 2, 4, 6),
             __builtin_shufflevector(ab, cd, 1, 3, 5, 7));
    }
}

}  // namespace Quorvan::dsp
