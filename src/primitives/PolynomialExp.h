#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

// Exponentials without branches, table or call, so that loops over blocks become vector code.
namespace Quorvan::dsp {

/// The next whole number at or below x, for magnitudes that fit an integer.
inline float FloorByTruncation(float x) {
    const auto truncated = static_cast<float>(static_cast<int32_t>(x));
    return truncated - (truncated > x ? 1.0f : 0.0f);
}

namespace details {

/// e^x as scale * (1 + tail): scale a power of two, tail = e^r - 1, the rest r within half of ln 2.
struct SplitExp {
    float scale;
    float tail;

    /// x is held to where scale is 0 or the largest power of two.
    explicit SplitExp(float x) {
        constexpr float kBound = 88.37626f;
        const float held = x < -kBound ? -kBound : x < kBound ? x : kBound;
        const float n = FloorByTruncation(held * 1.442695f + 0.5f);
        // ln 2 in two parts: the first has few digits, so that its multiples are exact.
        const float r = held - n * 0.693359375f - n * -0.00021219444f;
        float p = 0.00019875691f;
        p = p * r + 0.0013981999f;
        p = p * r + 0.008333452f;
        p = p * r + 0.041665796f;
        p = p * r + 0.16666666f;
        p = p * r + 0.5f;
        tail = p * (r * r) + r;
        scale = std::bit_cast<float>((static_cast<int32_t>(n) + 127) << 23);
    }
};

}  // namespace details

/// e^x, relative error below 2e-7; 0 below x = -87.7 and level above x = 88.
inline float PolynomialExp(float x) {
    const details::SplitExp e(x);
    return (e.tail + 1.0f) * e.scale;
}

/// e^x - 1, relative error below 4e-7 also around 0. For x up to 88.
inline float PolynomialExpm1(float x) {
    const details::SplitExp e(x);
    return e.tail * e.scale + (e.scale - 1.0f);
}

}  // namespace Quorvan::dsp
