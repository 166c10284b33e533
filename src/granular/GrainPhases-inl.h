// How far grains are, in the vectors of one instruction set. Included once for each set.
#if defined(QUORVAN_GRAIN_PHASES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QUORVAN_GRAIN_PHASES_INL_H
#undef QUORVAN_GRAIN_PHASES_INL_H
#else
#define QUORVAN_GRAIN_PHASES_INL_H
#endif

#include <cstdint>

#include "granular/GrainVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Quorvan::dsp {
namespace HWY_NAMESPACE {

/// Whether vectors of products with an inverse have come to the same singles as the quotients
/// would. Such a product is up to kFarthest steps of double precision off the quotient, which
/// doesn't matter as long as it keeps further than that from the middle between two singles.
class TieWatch {
public:
    HWY_INLINE TieWatch() : nearest(hn::Set(IntTag(), kMiddle)) {}

    HWY_INLINE void Look([[maybe_unused]] Doubles first, [[maybe_unused]] Doubles second) {
#if HWY_TARGET != HWY_SCALAR
        const IntTag di;
        const hn::RebindToUnsigned<DoubleTag> words;
        // What singles leave off lies in the low half of each.
        const Ints low = hn::OddEven(hn::BitCast(di, hn::ShiftLeft<32>(hn::BitCast(words, second))),
                                     hn::BitCast(di, first));
        const Ints beyond = hn::Sub(low, hn::Set(di, kMiddle - kFarthest));
        nearest = hn::Min(nearest, hn::And(beyond, hn::Set(di, 2 * kMiddle - 2 * kFarthest)));
#endif
    }
    HWY_INLINE bool Clear() const {
        return HWY_TARGET != HWY_SCALAR &&
               hn::AllTrue(IntTag(), hn::Gt(nearest, hn::Zero(IntTag())));
    }

private:
    static constexpr int32_t kMiddle = 1 << 28;
    /// 2 for the product, and half a one for each vector of the longest block.
    static constexpr int32_t kFarthest = 128;
    Ints nearest;
};

/// How far the grain is at every sample: source samples read over its length. Both elapsed and step
/// are of so few digits that sums are exact.
HWY_INLINE void FillPhases(float length, double elapsed, double step, uint32_t count, float* out) {
    const Doubles inverse = hn::Set(DoubleTag(), 1.0 / static_cast<double>(length));
    const Doubles ahead = hn::Set(DoubleTag(), step * static_cast<double>(LaneCount()));
    const Line read(elapsed, step);
    const Doubles growth = hn::Mul(ahead, inverse);
    TieWatch ties;
    Doubles p = hn::Mul(read.First(), inverse);
    Doubles q = hn::Mul(read.Second(), inverse);
    for (uint32_t i = 0; i < count; i += LaneCount()) {
        ties.Look(p, q);
        hn::StoreU(Narrow(p, q), FloatTag(), out + i);
        p = hn::Add(p, growth);
        q = hn::Add(q, growth);
    }
    if (HWY_LIKELY(ties.Clear()))
        return;
    const Doubles whole = hn::Set(DoubleTag(), static_cast<double>(length));
    Doubles x = read.First();
    Doubles y = read.Second();
    for (uint32_t i = 0; i < count; i += LaneCount()) {
        hn::StoreU(Narrow(hn::Div(x, whole), hn::Div(y, whole)), FloatTag(), out + i);
        x = hn::Add(x, ahead);
        y = hn::Add(y, ahead);
    }
}

}  // namespace HWY_NAMESPACE
}  // namespace Quorvan::dsp
HWY_AFTER_NAMESPACE();

#endif
