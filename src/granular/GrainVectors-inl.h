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

/// The points start + i * step for i = 0, 1, ..., half a vector at a time. They come from products,
/// not from sums, so that every set rounds them alike.
class Line {
public:
    HWY_INLINE Line(double first, double increment)
        : index(hn::Iota(DoubleTag(), 0.0)),
          start(hn::Set(DoubleTag(), first)),
          step(hn::Set(DoubleTag(), increment)),
          lanes(hn::Set(DoubleTag(), static_cast<double>(hn::Lanes(DoubleTag())))) {}

    HWY_INLINE Doubles Next() {
        const Doubles points = hn::Add(start, hn::Mul(index, step));
        index = hn::Add(index, lanes);
        return points;
    }

private:
    Doubles index, start, step, lanes;
};

}  // namespace HWY_NAMESPACE
}  // namespace Quorvan::dsp
HWY_AFTER_NAMESPACE();

#endif
