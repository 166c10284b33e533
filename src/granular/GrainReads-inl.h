// Ways to read the tape along a head, in the vectors of one instruction set. Included once for each
// set.
#if defined(QUORVAN_GRAIN_READS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QUORVAN_GRAIN_READS_INL_H
#undef QUORVAN_GRAIN_READS_INL_H
#else
#define QUORVAN_GRAIN_READS_INL_H
#endif

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "granular/GrainVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Quorvan::dsp {
namespace HWY_NAMESPACE {

HWY_INLINE Floats Blend(Floats x, Floats next, Floats fraction) {
    return hn::Add(x, hn::Mul(hn::Sub(next, x), fraction));
}

/// A read head whose positions count from the lowest place that it comes to, so that 32 bits hold
/// them.
struct LocalHead {
    LocalHead() = default;
    HWY_INLINE LocalHead(const GrainKernels::ReadHead& head, uint32_t count)
        : increment(head.increment) {
        const double last = head.position + head.increment * (count - 1);
        const auto lowest = static_cast<int64_t>(std::min(head.position, last));
        start = head.position - static_cast<double>(lowest);
        low = head.low + lowest;
        high = head.high + lowest;
    }

    HWY_INLINE Line Positions() const { return {start, increment}; }

    const float* low;
    const float* high;
    double start;
    double increment;
};

/// At unit speed all samples lie between their neighbours at the same place.
class UnitReader {
public:
    HWY_INLINE explicit UnitReader(const LocalHead& head)
        : low(head.low), high(head.high), fraction(Constant(static_cast<float>(head.start))) {}

    HWY_INLINE Floats Next() {
        const Floats x = Blend(hn::LoadU(FloatTag(), low), hn::LoadU(FloatTag(), high), fraction);
        low += LaneCount();
        high += LaneCount();
        return x;
    }

private:
    const float* low;
    const float* high;
    Floats fraction;
};

/// Places on the tape: whole parts of positions, and their fractions.
struct Places {
    Ints whole;
    Floats fraction;
};

/// Those of one vector of positions at or above 0.
HWY_INLINE Places NextPlaces(Line& positions) {
    const Doubles first = positions.First();
    [[maybe_unused]] const Doubles second = positions.Second();
    positions.GoOn();
#if HWY_TARGET == HWY_SCALAR
    const auto whole = hn::DemoteTo(IntTag(), first);
    return {whole, hn::DemoteTo(FloatTag(), hn::Sub(first, hn::PromoteTo(DoubleTag(), whole)))};
#elif HWY_TARGET == HWY_SSSE3  // which has no instruction for Trunc
    const auto x = hn::DemoteTo(HalfIntTag(), first);
    const auto y = hn::DemoteTo(HalfIntTag(), second);
    return {hn::Combine(IntTag(), y, x), Narrow(hn::Sub(first, hn::PromoteTo(DoubleTag(), x)),
                                                hn::Sub(second, hn::PromoteTo(DoubleTag(), y)))};
#else
    const Doubles x = hn::Trunc(first);
    const Doubles y = hn::Trunc(second);
    // The low half of the sum is the whole number.
    const Doubles shift = hn::Set(DoubleTag(), 0x1p52);
    const IntTag di;
    return {
        hn::ConcatEven(di, hn::BitCast(di, hn::Add(y, shift)), hn::BitCast(di, hn::Add(x, shift))),
        Narrow(hn::Sub(first, x), hn::Sub(second, y))};
#endif
}

/// Loads every place by itself, with its neighbour.
class PairReader {
public:
    HWY_INLINE explicit PairReader(const LocalHead& local)
        : head(local), positions(head.Positions()) {}

    HWY_INLINE Floats Next() {
        const Places places = NextPlaces(positions);
        HWY_ALIGN int32_t whole[GrainKernels::kMaxLanes];
        // Behind the last sample a reversed head may leave the tape.
        hn::Store(hn::Max(places.whole, hn::Zero(IntTag())), IntTag(), whole);
#if HWY_TARGET == HWY_SCALAR
        const Floats x = hn::LoadU(FloatTag(), head.low + whole[0]);
        const Floats next = hn::LoadU(FloatTag(), head.high + whole[0]);
#else
        const FloatTag d;
        const auto first = Pairs(d, whole);
        const auto second = Pairs(d, whole + LaneCount() / 2);
        const Floats x = hn::ConcatEven(d, second, first);
        const Floats next = hn::ConcatOdd(d, second, first);
#endif
        return Blend(x, next, places.fraction);
    }

private:
#if HWY_TARGET != HWY_SCALAR
    /// A vector of neighbours side by side.
    template <class Tag>
    HWY_INLINE hn::Vec<Tag> Pairs(Tag d, const int32_t* whole) const {
        if constexpr (hn::MaxLanes(d) == 2) {
            return hn::LoadU(d, head.low + *whole);
        } else {
            const hn::Half<Tag> half;
            return hn::Combine(d, Pairs(half, whole + hn::MaxLanes(half) / 2), Pairs(half, whole));
        }
    }
#endif

    LocalHead head;
    Line positions;
};

/// The same where the neighbours lie in different rounds of the tape: on the write head.
class ApartReader {
public:
    HWY_INLINE explicit ApartReader(const LocalHead& local)
        : head(local), positions(head.Positions()) {}

    HWY_INLINE Floats Next() {
        const Places places = NextPlaces(positions);
        HWY_ALIGN int32_t whole[GrainKernels::kMaxLanes];
        HWY_ALIGN float x[GrainKernels::kMaxLanes];
        HWY_ALIGN float next[GrainKernels::kMaxLanes];
        // As above: behind the last sample a reversed head may leave the tape.
        hn::Store(hn::Max(places.whole, hn::Zero(IntTag())), IntTag(), whole);
        for (uint32_t lane = 0; lane < LaneCount(); ++lane) {
            x[lane] = head.low[whole[lane]];
            next[lane] = head.high[whole[lane]];
        }
        return Blend(hn::Load(FloatTag(), x), hn::Load(FloatTag(), next), places.fraction);
    }

private:
    LocalHead head;
    Line positions;
};

#if HWY_TARGET <= HWY_AVX2
/// For heads so slow that the places of one vector lie within kVectors vectors of the tape:
/// permutes what lies around them instead of loading each by itself. Up to kVectors samples a
/// sample are slow enough.
template <int kVectors>
class WindowReader {
public:
    HWY_INLINE explicit WindowReader(const LocalHead& local)
        : head(local),
          positions(head.Positions()),
          ahead(head.increment * static_cast<double>(LaneCount())),
          back(head.increment < 0.0 ? kVectors * static_cast<int32_t>(LaneCount()) - 1 : 0) {}

    HWY_INLINE Floats Next() {
        const Places places = NextPlaces(positions);
        // The lowest place by another way than through the vector, which would take long.
        const int32_t base = std::max(static_cast<int32_t>(head.start + way) - back, 0);
        way += ahead;
        const Ints inside = hn::Sub(places.whole, hn::Set(IntTag(), base));
        return Blend(LookUp(head.low + base, inside), LookUp(head.high + base, inside),
                     places.fraction);
    }

private:
    /// window[place]
    static HWY_INLINE Floats LookUp(const float* window, Ints place) {
        const FloatTag d;
        const IntTag di;
        const Ints lanes = hn::Set(di, static_cast<int32_t>(LaneCount()));
        const auto indices = hn::IndicesFromVec(d, hn::And(place, hn::Sub(lanes, hn::Set(di, 1))));
        const Floats first = hn::TableLookupLanes(hn::LoadU(d, window), indices);
        if constexpr (kVectors == 1)
            return first;
        const Floats second = hn::TableLookupLanes(hn::LoadU(d, window + LaneCount()), indices);
        return hn::IfThenElse(hn::RebindMask(d, hn::Lt(place, lanes)), first, second);
    }

    LocalHead head;
    Line positions;
    double way = 0.0, ahead;  ///< from the start to the vector, and to the next
    int32_t back;             ///< from the vector's first place to the lowest that it may have
};
#endif

/// How fast a head is, as far as it decides on the reader.
enum Pace : uint32_t { kUnit, kSlow, kFaster, kAny, kPaces };

/// Without branches, as chance says which of them would be taken.
HWY_INLINE uint32_t PaceOf(double increment) {
    const double speed = std::abs(increment);
    const uint32_t pace = kSlow + uint32_t(speed > 1.0) + uint32_t(speed > 2.0);
    return increment == 1.0 ? kUnit : pace;
}

/// Calls use with the TypeOf a reader that suits the pace.
template <class Use>
HWY_INLINE void WithPace(uint32_t pace, const Use& use) {
    if (pace == kUnit)
        return use(TypeOf<UnitReader>());
#if HWY_TARGET <= HWY_AVX2
    if (pace == kSlow)
        return use(TypeOf<WindowReader<1>>());
    if (pace == kFaster)
        return use(TypeOf<WindowReader<2>>());
#endif
    use(TypeOf<PairReader>());
}

}  // namespace HWY_NAMESPACE
}  // namespace Quorvan::dsp
HWY_AFTER_NAMESPACE();

#endif
