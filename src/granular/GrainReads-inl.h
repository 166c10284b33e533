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

#include "granular/GrainCourses-inl.h"
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
    HWY_INLINE UnitReader(const GrainKernels::ReadHead& head, uint32_t, const Course&) {
        const auto whole = static_cast<int64_t>(head.position);
        low = head.low + whole;
        high = head.high + whole;
        fraction = Constant(static_cast<float>(head.position - static_cast<double>(whole)));
    }

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

#if HWY_TARGET != HWY_SCALAR
/// A vector of neighbours side by side, from as many places as half of its lanes.
template <class Tag>
HWY_INLINE hn::Vec<Tag> LoadPairs(Tag d, const float* tape, const int32_t* places) {
    if constexpr (hn::MaxLanes(d) == 2) {
        return hn::LoadU(d, tape + *places);
    } else {
        const hn::Half<Tag> half;
        return hn::Combine(d, LoadPairs(half, tape, places + hn::MaxLanes(half) / 2),
                           LoadPairs(half, tape, places));
    }
}
#endif

/// Loads every place by itself, with its neighbour.
class PairReader {
public:
    HWY_INLINE PairReader(const GrainKernels::ReadHead& any, uint32_t count, const Course&)
        : head(any, count), positions(head.Positions()) {}

    HWY_INLINE Floats Next() {
        const Places places = PlacesOf(positions.First(), positions.Second());
        positions.GoOn();
        HWY_ALIGN int32_t whole[GrainKernels::kMaxLanes];
        // Behind the last sample a reversed head may leave the tape.
        hn::Store(hn::Max(places.whole, hn::Zero(IntTag())), IntTag(), whole);
#if HWY_TARGET == HWY_SCALAR
        const Floats x = hn::LoadU(FloatTag(), head.low + whole[0]);
        const Floats next = hn::LoadU(FloatTag(), head.high + whole[0]);
#else
        const FloatTag d;
        const auto first = LoadPairs(d, head.low, whole);
        const auto second = LoadPairs(d, head.low, whole + LaneCount() / 2);
        const Floats x = hn::ConcatEven(d, second, first);
        const Floats next = hn::ConcatOdd(d, second, first);
#endif
        return Blend(x, next, places.fraction);
    }

private:
    LocalHead head;
    Line positions;
};

/// The same where the neighbours lie in different rounds of the tape: on the write head.
class ApartReader {
public:
    HWY_INLINE ApartReader(const GrainKernels::ReadHead& any, uint32_t count)
        : head(any, count), positions(head.Positions()) {}

    HWY_INLINE Floats Next() {
        const Places places = PlacesOf(positions.First(), positions.Second());
        positions.GoOn();
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

#if HWY_TARGET != HWY_SCALAR
/// Loads the pairs as PairReader does.
class FixedPairReader {
public:
    HWY_INLINE FixedPairReader(const GrainKernels::ReadHead& head, uint32_t, const Course& course)
        : places(head.low, course) {}

    HWY_INLINE Floats Next() {
        const FloatTag d;
        HWY_ALIGN int32_t behind[GrainKernels::kMaxLanes];
        hn::Store(places.BehindFirst(), IntTag(), behind);
        const float* const window = places.Window();
        const auto early = LoadPairs(d, window, behind);
        const auto late = LoadPairs(d, window, behind + LaneCount() / 2);
        const Floats fractions = places.Fractions();
        places.GoOn();
        return Blend(hn::ConcatEven(d, late, early), hn::ConcatOdd(d, late, early), fractions);
    }

private:
    FixedPlaces places;
};
#endif

#if HWY_TARGET <= HWY_AVX2
/// For heads so slow that the places of one vector lie within kVectors vectors of the tape:
/// permutes what lies around them instead of loading each by itself. Up to kVectors samples a
/// sample are slow enough.
template <int kVectors>
class WindowReader {
public:
    HWY_INLINE WindowReader(const GrainKernels::ReadHead& head, uint32_t, const Course& course)
        : places(head.low, course),
          lowest(hn::Set(IntTag(), head.increment < 0.0 ? static_cast<int>(LaneCount()) - 1 : 0)) {}

    HWY_INLINE Floats Next() {
        const float* const window = places.Window();
        const Ints bytes = places.Bytes();
        const Ints inside = hn::Sub(bytes, AnyLane(bytes, lowest));
        const Floats fractions = places.Fractions();
        places.GoOn();
        return Blend(LookUp<kVectors>(window, inside), LookUp<kVectors>(window + 1, inside),
                     fractions);
    }

private:
    FixedPlaces places;
    Ints lowest;  ///< the lane whose place is the window's
};
#endif

/// Calls use with the TypeOf a reader that suits the pace.
template <class Use>
HWY_INLINE void WithPace(int32_t pace, const Use& use) {
    if (pace == kUnit)
        return use(TypeOf<UnitReader>());
#if HWY_TARGET <= HWY_AVX2
    if (pace == kSlow)
        return use(TypeOf<WindowReader<1>>());
    if (pace == kFaster)
        return use(TypeOf<WindowReader<2>>());
    if (pace == kFast)
        return use(TypeOf<WindowReader<4>>());
#endif
#if HWY_TARGET != HWY_SCALAR
    if (pace != kAny)
        return use(TypeOf<FixedPairReader>());
#endif
    use(TypeOf<PairReader>());
}

}  // namespace HWY_NAMESPACE
}  // namespace Quorvan::dsp
HWY_AFTER_NAMESPACE();

#endif
