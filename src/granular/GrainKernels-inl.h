// The grain kernels in the vectors of one instruction set. Included once for each set.
#if defined(QUORVAN_GRAIN_KERNELS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QUORVAN_GRAIN_KERNELS_INL_H
#undef QUORVAN_GRAIN_KERNELS_INL_H
#else
#define QUORVAN_GRAIN_KERNELS_INL_H
#endif

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "granular/GrainEnvelopes-inl.h"
#include "granular/GrainVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Quorvan::dsp {
namespace HWY_NAMESPACE {

/// Runs of this many samples at most are laid out on the stack at one time.
constexpr uint32_t kChunk = 64;

/// Places on the tape: whole parts of positions, and their fractions.
struct Places {
    Ints whole;
    Floats fraction;
};

/// The places of one vector of positions.
HWY_INLINE Places NextPlaces(Line& positions) {
    const Doubles first = positions.Next();
    const auto firstWhole = hn::DemoteTo(HalfIntTag(), first);
    const auto firstPart =
        hn::DemoteTo(HalfTag(), hn::Sub(first, hn::PromoteTo(DoubleTag(), firstWhole)));
#if HWY_TARGET == HWY_SCALAR
    return {firstWhole, firstPart};
#else
    const Doubles second = positions.Next();
    const auto secondWhole = hn::DemoteTo(HalfIntTag(), second);
    const auto secondPart =
        hn::DemoteTo(HalfTag(), hn::Sub(second, hn::PromoteTo(DoubleTag(), secondWhole)));
    return {hn::Combine(IntTag(), secondWhole, firstWhole),
            hn::Combine(FloatTag(), secondPart, firstPart)};
#endif
}

/// A read head whose positions count from the lowest place that it comes to, so that 32 bits hold
/// them.
struct LocalHead {
    LocalHead(const GrainKernels::ReadHead& head, uint32_t count) : increment(head.increment) {
        const double last = head.position + head.increment * (count - 1);
        const double lowest = std::floor(std::min(head.position, last));
        start = head.position - lowest;
        low = head.low + static_cast<size_t>(lowest);
        high = head.high + static_cast<size_t>(lowest);
    }

    const float* low;
    const float* high;
    double start;
    double increment;
};

HWY_INLINE Floats Blend(Floats x, Floats next, Floats fraction) {
    return hn::Add(x, hn::Mul(hn::Sub(next, x), fraction));
}

HWY_INLINE void InterpolateAtUnitSpeed(const GrainKernels::ReadHead& head, uint32_t count,
                                       float* out) {
    const FloatTag d;
    const double whole = std::floor(head.position);
    const Floats fraction = Constant(static_cast<float>(head.position - whole));
    const float* low = head.low + static_cast<size_t>(whole);
    const float* high = head.high + static_cast<size_t>(whole);
    for (uint32_t i = 0; i < count; i += LaneCount())
        hn::StoreU(Blend(hn::LoadU(d, low + i), hn::LoadU(d, high + i), fraction), d, out + i);
}

/// Lays the two neighbours of every place side by side.
HWY_INLINE void Gather(const LocalHead& head, const int32_t* whole, uint32_t count, float* pairs) {
    if (head.high == head.low + 1) {
        for (uint32_t i = 0; i < count; ++i)
            std::memcpy(pairs + 2 * i, head.low + whole[i], 2 * sizeof(float));
    } else {
        for (uint32_t i = 0; i < count; ++i) {
            pairs[2 * i] = head.low[whole[i]];
            pairs[2 * i + 1] = head.high[whole[i]];
        }
    }
}

HWY_INLINE void InterpolateByGather(const LocalHead& head, uint32_t count, float* out) {
    const FloatTag d;
    HWY_ALIGN int32_t whole[kChunk];
    HWY_ALIGN float fraction[kChunk];
    HWY_ALIGN float pairs[2 * kChunk];
    const uint32_t lanes = LaneCount();
    Line positions(head.start, head.increment);
    for (uint32_t done = 0; done < count; done += kChunk) {
        const uint32_t chunk = std::min(kChunk, count - done);
        for (uint32_t i = 0; i < chunk; i += lanes) {
            const Places places = NextPlaces(positions);
            hn::Store(places.whole, IntTag(), whole + i);
            hn::Store(places.fraction, d, fraction + i);
        }
        Gather(head, whole, chunk, pairs);
        for (uint32_t i = 0; i < chunk; i += lanes) {
#if HWY_TARGET == HWY_SCALAR
            const Floats x = hn::Load(d, pairs + 2 * i);
            const Floats next = hn::Load(d, pairs + 2 * i + 1);
#else
            const Floats first = hn::Load(d, pairs + 2 * i);
            const Floats second = hn::Load(d, pairs + 2 * i + lanes);
            const Floats x = hn::ConcatEven(d, second, first);
            const Floats next = hn::ConcatOdd(d, second, first);
#endif
            hn::StoreU(Blend(x, next, hn::Load(d, fraction + i)), d, out + done + i);
        }
    }
}

#if HWY_TARGET <= HWY_AVX3
/// Up to this speed the places of one vector lie within two vectors of the tape.
constexpr double kWindowSpeed = 2.0;

/// window[place] for places below two vectors.
HWY_INLINE Floats LookUp(const float* window, Ints place) {
    const FloatTag d;
    const IntTag di;
    const Ints lanes = hn::Set(di, static_cast<int32_t>(LaneCount()));
    const auto indices = hn::IndicesFromVec(d, hn::And(place, hn::Sub(lanes, hn::Set(di, 1))));
    const Floats first = hn::TableLookupLanes(hn::LoadU(d, window), indices);
    const Floats second = hn::TableLookupLanes(hn::LoadU(d, window + LaneCount()), indices);
    return hn::IfThenElse(hn::RebindMask(d, hn::Lt(place, lanes)), first, second);
}

/// For slow heads: permutes what lies around the places instead of loading each by itself.
HWY_INLINE void InterpolateInWindows(const LocalHead& head, uint32_t count, float* out) {
    const FloatTag d;
    const uint32_t lanes = LaneCount();
    Line positions(head.start, head.increment);
    for (uint32_t i = 0; i < count; i += lanes) {
        const Places places = NextPlaces(positions);
        const uint32_t lowest = head.increment < 0.0 ? std::min(lanes, count - i) - 1 : 0;
        const auto base = static_cast<int32_t>(head.start + (i + lowest) * head.increment);
        const Ints place = hn::Sub(places.whole, hn::Set(IntTag(), base));
        const Floats x = LookUp(head.low + base, place);
        const Floats next = LookUp(head.high + base, place);
        hn::StoreU(Blend(x, next, places.fraction), d, out + i);
    }
}
#endif

void Interpolate(const GrainKernels::ReadHead& readHead, uint32_t count, float* out) {
    if (readHead.increment == 1.0)
        return InterpolateAtUnitSpeed(readHead, count, out);
    const LocalHead head(readHead, count);
#if HWY_TARGET <= HWY_AVX3
    if (std::abs(head.increment) <= kWindowSpeed)
        return InterpolateInWindows(head, count, out);
#endif
    InterpolateByGather(head, count, out);
}

/// One step of a read head. Its three roundings are the grain's own, so that no step may be left
/// out or put together with the next.
template <bool kLoops>
HWY_INLINE Doubles Step(Doubles position, Doubles increment, Doubles wrap) {
    const Doubles moved = hn::Add(position, increment);
    if constexpr (!kLoops)
        return hn::Mul(hn::Div(moved, wrap), wrap);
    const Doubles zero = hn::Zero(DoubleTag());
    const Doubles ahead = hn::Add(moved, hn::IfThenElseZero(hn::Le(moved, zero), wrap));
    const Doubles turns = hn::Div(ahead, wrap);
    const Doubles part = hn::Sub(turns, hn::Trunc(turns));
    const Doubles one = hn::Set(DoubleTag(), 1.0);
    return hn::Mul(hn::Add(part, hn::IfThenElseZero(hn::Lt(part, zero), one)), wrap);
}

/// Vectors of heads that hide the time of each other's divisions.
constexpr size_t kDoubles = hn::MaxLanes(DoubleTag());
constexpr size_t kBeside = std::min<size_t>(4, GrainKernels::kHeads / kDoubles);

template <bool kLoops>
HWY_INLINE void WalkBeside(const GrainKernels::Heads& heads, uint32_t steps, double* out) {
    const DoubleTag d;
    Doubles at[kBeside], step[kBeside], wrap[kBeside];
    for (size_t v = 0; v < kBeside; ++v) {
        at[v] = hn::LoadU(d, heads.position + v * kDoubles);
        step[v] = hn::LoadU(d, heads.increment + v * kDoubles);
        wrap[v] = hn::LoadU(d, heads.wrap + v * kDoubles);
        hn::Store(at[v], d, out + v * kDoubles);
    }
    for (uint32_t i = 0; i < steps; ++i) {
        out += GrainKernels::kHeads;
        for (size_t v = 0; v < kBeside; ++v) {
            at[v] = Step<kLoops>(at[v], step[v], wrap[v]);
            hn::Store(at[v], d, out + v * kDoubles);
        }
    }
}

/// Whether none of the first heads comes near the end of its loop.
HWY_INLINE bool StayInside(const GrainKernels::Heads& heads, uint32_t steps) {
    for (size_t h = 0; h < kBeside * kDoubles; ++h) {
        const double from = heads.position[h];
        const double to = from + heads.increment[h] * steps;
        if (!(std::min(from, to) > 0.25 && std::max(from, to) < heads.wrap[h] - 0.25))
            return false;
    }
    return true;
}

void Walk(const GrainKernels::Heads& heads, uint32_t steps, double* out) {
    for (size_t h = 0; h < GrainKernels::kHeads; h += kBeside * kDoubles) {
        const GrainKernels::Heads some{heads.position + h, heads.increment + h, heads.wrap + h};
        if (StayInside(some, steps))
            WalkBeside<false>(some, steps, out + h);
        else
            WalkBeside<true>(some, steps, out + h);
    }
}

void Crossfade(float* x, const float* y, float start, float slope, uint32_t count) {
    const FloatTag d;
    const Floats one = Constant(1.0f);
    for (uint32_t i = 0; i < count; i += LaneCount()) {
        const Floats index = hn::Iota(d, static_cast<float>(i));
        const Floats c = hn::Add(Constant(start), hn::Mul(index, Constant(slope)));
        const Floats held = hn::Min(hn::Max(c, hn::Zero(d)), one);
        const Floats from = hn::Mul(hn::LoadU(d, x + i), held);
        const Floats to = hn::Mul(hn::Sub(one, held), hn::LoadU(d, y + i));
        hn::StoreU(hn::Add(from, to), d, x + i);
    }
}

void Mix(const float* envelope, const float* x, float gain, uint32_t count, float* out) {
    const FloatTag d;
    const uint32_t lanes = LaneCount();
    const Floats level = Constant(gain);
    const auto part = [&](uint32_t i) HWY_ATTR {
        return hn::Mul(hn::Mul(level, hn::LoadU(d, envelope + i)), hn::LoadU(d, x + i));
    };
    uint32_t i = 0;
    for (; i + lanes <= count; i += lanes)
        hn::StoreU(hn::Add(hn::LoadU(d, out + i), part(i)), d, out + i);
    if (i < count) {
        const Floats kept = hn::LoadU(d, out + i);
        const auto inside = hn::FirstN(d, count - i);
        hn::StoreU(hn::IfThenElse(inside, hn::Add(kept, part(i)), kept), d, out + i);
    }
}

const GrainKernels& Table() {
    static const GrainKernels table{&FillEnvelope, &Interpolate, &Walk,
                                    &Crossfade,    &Mix,         hwy::TargetName(HWY_TARGET)};
    return table;
}

}  // namespace HWY_NAMESPACE
}  // namespace Quorvan::dsp
HWY_AFTER_NAMESPACE();

#endif
