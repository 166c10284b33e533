#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

// Cheap approximations whose exact form is part of the sound: grain envelopes and fades are made of
// them. Any vector form must take the same steps.
namespace Quorvan::dsp {

/// 2^x for x from -126 on; smaller x counts as -126. Relative error below 7.5e-5: the fractional
/// part is a rational curve, written straight into the bits of a float.
inline float FastPow2(float x) {
    const float v = std::max(x, -126.0f);
    const float up = x < 0.0f ? 1.0f : 0.0f;
    const float f = v - static_cast<float>(static_cast<int32_t>(v)) + up;
    const float sum = 27.728024f / (4.8425255f - f) + v + 121.274055f - 1.4901291f * f;
    return std::bit_cast<float>(static_cast<int32_t>(sum * 8388608.0f));
}

/// e^x, likewise.
inline float FastExp(float x) { return FastPow2(x * 1.442695f); }

/// A parabola through the zeros and peaks of the sine, for a in -pi..pi. Absolute error below
/// 0.0561.
inline float FastSin(float a) { return (1.2732395f - 0.40528473f * std::abs(a)) * a; }

/// The same for a phase in turns, at or above 0.
inline float FastSinOfTurn(float turns) {
    const float a = (turns - std::floor(turns)) * 6.2831855f;
    return FastSin(a > 3.1415927f ? a - 6.2831855f : a);
}

}  // namespace Quorvan::dsp
