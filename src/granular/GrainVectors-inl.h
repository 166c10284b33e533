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

/// Two halves of a vector, rounded to single precision.
HWY_INLINE Floats Narrow(Doubles first, [[maybe_unused]] Doubles second) {
#if HWY_TARGET == HWY_SCALAR
    return hn::DemoteTo(FloatTag(), first);
#else
    return hn::Combine(FloatTag(), hn::DemoteTo(HalfTag(), second), hn::DemoteTo(HalfTag(), first));
#endif
}

}  // namespace HWY_NAMESPACE
}  // namespace Quorvan::dsp
HWY_AFTER_NAMESPACE();

#endif
