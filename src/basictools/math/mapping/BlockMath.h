#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <numbers>

// Exponential and power for loops over blocks: plain single-precision arithmetic without a jump or
// a call, which the compiler turns into vector code, and which gives the same result on every
// instruction set. Range reduction and polynomials follow S. L. Moshier, "Methods and Programs for
// Mathematical Functions" (Cephes).
namespace Quorvan::MappingTools {

namespace details {

constexpr float kLn2 = std::numbers::ln2_v<float>;
constexpr float kLog2E = std::numbers::log2e_v<float>;
// Added to a float below 2^22, it leaves the nearest whole number in the low bits of the sum.
constexpr float kRounder = 12582912.0f;

/// e^x for |x| up to ln(2) / 2.
inline float ExpNearZero(float x) {
    float p = 1.9875691500e-4f;
    p = p * x + 1.3981999507e-3f;
    p = p * x + 8.3334519073e-3f;
    p = p * x + 4.1665795894e-2f;
    p = p * x + 1.6666665459e-1f;
    p = p * x + 5.0000001201e-1f;
    return p * (x * x) + x + 1.0f;
}

/// log(1 + x) for 1 + x between the square roots of 1/2 and 2.
inline float LogNearOne(float x) {
    float p = 7.0376836292e-2f;
    p = p * x - 1.1514610310e-1f;
    p = p * x + 1.1676998740e-1f;
    p = p * x - 1.2420140846e-1f;
    p = p * x + 1.4249322787e-1f;
    p = p * x - 1.6668057665e-1f;
    p = p * x + 2.0000714765e-1f;
    p = p * x - 2.4999993993e-1f;
    p = p * x + 3.3333331174e-1f;
    const float square = x * x;
    return x + (p * x * square - 0.5f * square);
}

/// 2^n for n = -127..127, as kRounder has left it in rounded; n = -127 gives 0.
inline float PowerOfTwo(float rounded) {
    const uint32_t n = std::bit_cast<uint32_t>(rounded) - std::bit_cast<uint32_t>(kRounder);
    return std::bit_cast<float>((n + 127u) << 23);
}

}  // namespace details

/// Beyond it, BlockExp stays at its end value: 2.4e38 above, 0 below.
inline constexpr float kBlockExpLimit = 88.37626f;

/// e^x. Relative error below 2e-7 for x = -87..88.
inline float BlockExp(float x) {
    using namespace details;
    // ln(2) in two parts, the first short enough that its product with a whole number is exact.
    constexpr float kLn2High = 0.693359375f;
    constexpr float kLn2Low = -2.12194440e-4f;

    // The order of the comparisons takes what is not a number to the upper limit.
    const float capped = x < kBlockExpLimit ? x : kBlockExpLimit;
    const float limited = capped > -kBlockExpLimit ? capped : -kBlockExpLimit;
    const float rounded = limited * kLog2E + kRounder;
    const float twos = rounded - kRounder;
    return ExpNearZero(limited - twos * kLn2High - twos * kLn2Low) * PowerOfTwo(rounded);
}

/// base^exponent with one exponent for many bases.
///
/// exponent  above 0, up to 1000
/// base      0..1; exactly 0 gives 0, and what lies below the smallest normal float counts as that
/// Error     relative, below 2e-7 + 1e-7 * exponent; results under 1e-38 come out as 0
class BlockPower {
public:
    explicit BlockPower(float power)
        : exponent(power),
          high(std::bit_cast<float>(std::bit_cast<uint32_t>(power) & 0xfffff000u)),
          low(power - high) {}

    float operator()(float base) const {
        using namespace details;
        constexpr float kSmallest = std::numeric_limits<float>::min();
        constexpr int32_t kSqrtHalfBits = 0x3f3504f3;
        constexpr float kLowestTwos = -126.5f;

        // base = mantissa * 2^octaves with the mantissa around 1.
        const float normal = base > kSmallest ? base : kSmallest;
        const int32_t bits = std::bit_cast<int32_t>(normal) - kSqrtHalfBits;
        const float octaves = static_cast<float>(bits >> 23);
        const float mantissa = std::bit_cast<float>((bits & 0x7fffff) + kSqrtHalfBits);

        // The logarithm as one number would cost digits: a small base has a large one. Its whole
        // octaves times the short upper part of the exponent are exact.
        const float bent = exponent * LogNearOne(mantissa - 1.0f);
        const float coarse = high * octaves;
        const float twos = coarse + bent * kLog2E;
        const float rounded = twos + kRounder;
        const float rest = (coarse - (rounded - kRounder)) + low * octaves;
        const float result = ExpNearZero(rest * kLn2 + bent) * PowerOfTwo(rounded);

        const float notTooSmall = twos > kLowestTwos ? result : 0.0f;
        return base == 0.0f ? 0.0f : notTooSmall;
    }

private:
    float exponent;
    float high, low;  ///< the exponent's upper twelve bits, and the rest
};

}  // namespace Quorvan::MappingTools
