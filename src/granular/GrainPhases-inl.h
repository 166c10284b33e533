// How far grains are, in the vectors of one instruction set. Included once for each set.
#if defined(QUORVAN_GRAIN_PHASES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QUORVAN_GRAIN_PHASES_INL_H
#undef QUORVAN_GRAIN_PHASES_INL_H
#else
#define QUORVAN_GRAIN_PHASES_INL_H
#endif

#include <cstddef>
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
        // What singles leave off lies in the low half of each.
        const Ints low = LowHalves(first, second);
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

/// How far grains are at the first sample, source samples read over their lengths, and how far they
/// come in a sample; a property of all side by side.
struct Phases {
    HWY_ALIGN double start[GrainKernels::kVoices];
    HWY_ALIGN double step[GrainKernels::kVoices];
};

/// The phases of one vector of grains from that number on.
HWY_INLINE void FillPhases(const float* length, const double* elapsed, const double* increment,
                           size_t at, Phases& phases) {
    const DoubleTag d;
    const Doubles whole = hn::PromoteTo(d, hn::LoadU(HalfTag(), length + at));
    const Doubles inverse = hn::Div(hn::Set(d, 1.0), whole);
    const Doubles speed = hn::Abs(hn::LoadU(d, increment + at));
    hn::Store(hn::Mul(hn::LoadU(d, elapsed + at), inverse), d, phases.start + at);
    hn::Store(hn::Mul(speed, inverse), d, phases.step + at);
}

/// The phases of one grain, a vector after the other.
class PhaseLine {
public:
    HWY_INLINE PhaseLine(double start, double step) {
        const DoubleTag d;
        const auto half = static_cast<double>(hn::Lanes(d));
        const Doubles from = hn::Set(d, start);
        const Doubles way = hn::Set(d, step);
        first = hn::Add(from, hn::Mul(hn::Iota(d, 0.0), way));
        second = hn::Add(from, hn::Mul(hn::Iota(d, half), way));
        growth = hn::Mul(way, hn::Set(d, static_cast<double>(LaneCount())));
    }

    HWY_INLINE Floats Next() {
        ties.Look(first, second);
        const Floats x = Narrow(first, second);
        first = hn::Add(first, growth);
        second = hn::Add(second, growth);
        return x;
    }
    /// Whether all that came were those that quotients would have been.
    HWY_INLINE bool Clear() const { return ties.Clear(); }

private:
    Doubles first, second, growth;
    TieWatch ties;
};

/// The same by a division each. Both elapsed and step are of so few digits that sums are exact.
HWY_NOINLINE void DividePhases(float length, double elapsed, double step, uint32_t count,
                               float* out) {
    const Doubles whole = hn::Set(DoubleTag(), static_cast<double>(length));
    Line read(elapsed, step);
    for (size_t i = 0; i < count; i += LaneCount()) {
        const Floats x = Narrow(hn::Div(read.First(), whole), hn::Div(read.Second(), whole));
        hn::StoreU(x, FloatTag(), out + i);
        read.GoOn();
    }
}

}  // namespace HWY_NAMESPACE
}  // namespace Quorvan::dsp
HWY_AFTER_NAMESPACE();

#endif
