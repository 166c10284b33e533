// Vector types that the grain kernels share. Included once for each instruction set.
#if defined(QUORVAN_GRAIN_VECTORS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QUORVAN_GRAIN_VECTORS_INL_H
#undef QUORVAN_GRAIN_VECTORS_INL_H
#else
#define QUORVAN_GRAIN_VECTORS_INL_H
#endif

#include <hwy/highway.h>

#include <cstdint>

#include "granular/GrainKernels.h"

HWY_BEFORE_NAMESPACE();
namespace Quorvan::dsp {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using FloatTag = hn::CappedTag<float, GrainKernels::kMaxLanes>;
using IntTag = hn::RebindToSigned<FloatTag>;
using Floats = hn::Vec<FloatTag>;
using Ints = hn::Vec<IntTag>;
// A vector of floats is made of two of doubles; the scalar set has one of each.
#if HWY_TARGET == HWY_SCALAR
using DoubleTag = hn::CappedTag<double, 1>;
#else
using DoubleTag = hn::Repartition<double, FloatTag>;
#endif
using Doubles = hn::Vec<DoubleTag>;
using HalfTag = hn::Rebind<float, DoubleTag>;
using HalfIntTag = hn::Rebind<int32_t, DoubleTag>;

constexpr size_t kDoubles = hn::MaxLanes(DoubleTag());
HWY_INLINE uint32_t LaneCount() { return static_cast<uint32_t>(hn::Lanes(FloatTag())); }
HWY_INLINE Floats Constant(float value) { return hn::Set(FloatTag(), value); }

/// Names a type to a generic lambda.
template <class T>
struct TypeOf {
    using Type = T;
};

/// The points start + i * step of one vector after the other, half a vector at a time; the scalar
/// set has no second half. Steps come from single precision, so that their multiples are exact
/// whether they are products or sums, and every set rounds the points alike.
class Line {
public:
    HWY_INLINE Line(double from, double increment)
        : start(hn::Set(DoubleTag(), from)),
          ahead(hn::Set(DoubleTag(), increment * static_cast<double>(hn::Lanes(FloatTag())))) {
        const DoubleTag d;
        const Doubles step = hn::Set(d, increment);
        const auto half = static_cast<double>(hn::Lanes(d));
        wayOfFirst = hn::Mul(hn::Iota(d, 0.0), step);
        wayOfSecond = hn::Mul(hn::Iota(d, half), step);
    }

    HWY_INLINE Doubles First() const { return hn::Add(start, wayOfFirst); }
    HWY_INLINE Doubles Second() const { return hn::Add(start, wayOfSecond); }
    HWY_INLINE void GoOn() {
        wayOfFirst = hn::Add(wayOfFirst, ahead);
        wayOfSecond = hn::Add(wayOfSecond, ahead);
    }

private:
    Doubles start, ahead, wayOfFirst, wayOfSecond;
};

/// Truncated; all of x lie in the range of integers, so that no lane needs mending.
HWY_INLINE Ints TruncatedInRange(Floats x) {
#if HWY_TARGET == HWY_AVX3
    return Ints{_mm512_cvttps_epi32(x.raw)};
#elif HWY_TARGET == HWY_AVX2
    return Ints{_mm256_cvttps_epi32(x.raw)};
#elif HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_SSSE3
    return Ints{_mm_cvttps_epi32(x.raw)};
#else
    return hn::ConvertTo(IntTag(), x);
#endif
}

#if HWY_TARGET == HWY_AVX2
/// Lane i is x[lane[i]]; of numbers only the digits that count are looked at.
HWY_INLINE Ints AnyLane(Ints x, Ints lane) {
    return Ints{_mm256_permutevar8x32_epi32(x.raw, lane.raw)};
}
/// One, two or four vectors at window, permuted.
template <int kVectors>
HWY_INLINE Floats LookUp(const float* window, Ints index) {
    if constexpr (kVectors == 1) {
        const Floats all = hn::LoadU(FloatTag(), window);
        return Floats{_mm256_permutevar8x32_ps(all.raw, index.raw)};
    } else {
        const Floats first = LookUp<kVectors / 2>(window, index);
        const Floats second = LookUp<kVectors / 2>(window + kVectors / 2 * LaneCount(), index);
        // The sign says which: the highest digit that counts.
        constexpr int kAbove = kVectors == 2 ? 28 : 27;
        const auto beyond = _mm256_castsi256_ps(hn::ShiftLeft<kAbove>(index).raw);
        return Floats{_mm256_blendv_ps(first.raw, second.raw, beyond)};
    }
}
#elif HWY_TARGET < HWY_AVX2
HWY_INLINE Ints AnyLane(Ints x, Ints lane) {
    return Ints{_mm512_permutexvar_epi32(lane.raw, x.raw)};
}
/// One, two or four vectors at window, permuted; of indices only the digits that count are looked
/// at.
template <int kVectors>
HWY_INLINE Floats LookUp(const float* window, Ints index) {
    const FloatTag d;
    const auto first = hn::LoadU(d, window).raw;
    if constexpr (kVectors == 1) {
        return Floats{_mm512_permutexvar_ps(index.raw, first)};
    } else {
        const auto second = hn::LoadU(d, window + LaneCount()).raw;
        const auto either = _mm512_permutex2var_ps(first, index.raw, second);
        if constexpr (kVectors == 2) {
            return Floats{either};
        } else {
            const Floats behind = LookUp<2>(window + 2 * LaneCount(), index);
            const auto beyond = _mm512_test_epi32_mask(index.raw, _mm512_set1_epi32(32));
            return Floats{_mm512_mask_blend_ps(beyond, either, behind.raw)};
        }
    }
}
#endif

/// All lanes are x's first.
HWY_INLINE Ints FirstLane(Ints x) {
#if HWY_TARGET <= HWY_AVX2
    return AnyLane(x, hn::Zero(IntTag()));
#else
    return hn::Broadcast<0>(x);
#endif
}

/// The same as a number.
HWY_INLINE Floats WholeInRange(Floats x) {
#if HWY_TARGET == HWY_SSSE3  // which has no instruction for Trunc
    return hn::ConvertTo(FloatTag(), TruncatedInRange(x));
#else
    return hn::Trunc(x);
#endif
}

HWY_INLINE hn::Vec<HalfIntTag> TruncatedInRange(Doubles x) {
#if HWY_TARGET == HWY_AVX3
    return hn::Vec<HalfIntTag>{_mm512_cvttpd_epi32(x.raw)};
#elif HWY_TARGET == HWY_AVX2
    return hn::Vec<HalfIntTag>{_mm256_cvttpd_epi32(x.raw)};
#else
    return hn::DemoteTo(HalfIntTag(), x);
#endif
}

#if HWY_TARGET != HWY_SCALAR
/// The low halves of the bits of two vectors, in any order.
HWY_INLINE Ints LowHalves(Doubles first, Doubles second) {
#if HWY_TARGET == HWY_AVX3
    return Ints{_mm512_castps_si512(
        _mm512_shuffle_ps(_mm512_castpd_ps(first.raw), _mm512_castpd_ps(second.raw), 0x88))};
#elif HWY_TARGET == HWY_AVX2
    return Ints{_mm256_castps_si256(
        _mm256_shuffle_ps(_mm256_castpd_ps(first.raw), _mm256_castpd_ps(second.raw), 0x88))};
#else
    return hn::ConcatEven(IntTag(), hn::BitCast(IntTag(), second), hn::BitCast(IntTag(), first));
#endif
}
#endif

/// Two halves of a vector, rounded to single precision.
HWY_INLINE Floats Narrow(Doubles first, [[maybe_unused]] Doubles second) {
#if HWY_TARGET == HWY_SCALAR
    return hn::DemoteTo(FloatTag(), first);
#else
    return hn::Combine(FloatTag(), hn::DemoteTo(HalfTag(), second), hn::DemoteTo(HalfTag(), first));
#endif
}

/// Places: whole parts of positions, and their fractions.
struct Places {
    Ints whole;
    Floats fraction;
};

/// Those of two halves of a vector, at or above 0 and in the range of integers.
HWY_INLINE Places PlacesOf(Doubles first, [[maybe_unused]] Doubles second) {
    const DoubleTag d;
    const auto x = TruncatedInRange(first);
#if HWY_TARGET == HWY_SCALAR
    return {x, hn::DemoteTo(FloatTag(), hn::Sub(first, hn::PromoteTo(d, x)))};
#else
    const auto y = TruncatedInRange(second);
    return {hn::Combine(IntTag(), y, x),
            Narrow(hn::Sub(first, hn::PromoteTo(d, x)), hn::Sub(second, hn::PromoteTo(d, y)))};
#endif
}

}  // namespace HWY_NAMESPACE
}  // namespace Quorvan::dsp
HWY_AFTER_NAMESPACE();

#endif
