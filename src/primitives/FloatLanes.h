#pragma once

#include <cstring>

namespace Quorvan::dsp {

/// Four floats that every machine works on at once.
using FloatLanes = float __attribute__((vector_size(16)));

inline FloatLanes LoadLanes(const float* from) {
    FloatLanes lanes;
    std::memcpy(&lanes, from, sizeof lanes);
    return lanes;
}
inline void StoreLanes(float* to, FloatLanes lanes) { std::memcpy(to, &lanes, sizeof lanes); }

/// Every other one of eight.
inline FloatLanes EvenLanes(FloatLanes a, FloatLanes b) {
    return __builtin_shufflevector(a, b, 0, 2, 4, 6);
}
inline FloatLanes OddLanes(FloatLanes a, FloatLanes b) {
    return __builtin_shufflevector(a, b, 1, 3, 5, 7);
}
/// a, b, a, b of the lower, or of the upper, two of each.
inline FloatLanes ZipLower(FloatLanes a, FloatLanes b) {
    return __builtin_shufflevector(a, b, 0, 4, 1, 5);
}
inline FloatLanes ZipUpper(FloatLanes a, FloatLanes b) {
    return __builtin_shufflevector(a, b, 2, 6, 3, 7);
}
inline FloatLanes LowerPairs(FloatLanes a, FloatLanes b) {
    return __builtin_shufflevector(a, b, 0, 1, 4, 5);
}
inline FloatLanes UpperPairs(FloatLanes a, FloatLanes b) {
    return __builtin_shufflevector(a, b, 2, 3, 6, 7);
}
inline FloatLanes ReverseLanes(FloatLanes a) { return __builtin_shufflevector(a, a, 3, 2, 1, 0); }

}  // namespace Quorvan::dsp
