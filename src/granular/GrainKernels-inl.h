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

#include "granular/GrainEnvelopes-inl.h"
#include "granular/GrainReads-inl.h"
#include "granular/GrainVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Quorvan::dsp {
namespace HWY_NAMESPACE {

/// In two passes: the processor sees only so far ahead, and each has a long chain of its own.
void FillEnvelope(const GrainKernels::Envelope& e, double elapsed, double step, uint32_t count,
                  float* out) {
    FillPhases(e.length, elapsed, step, count, out);
    WithShape(e, [=](const auto shape) HWY_ATTR {
        for (uint32_t i = 0; i < count; i += LaneCount())
            hn::StoreU(shape(hn::LoadU(FloatTag(), out + i)), FloatTag(), out + i);
    });
}

void Interpolate(const GrainKernels::ReadHead& head, uint32_t count, float* out) {
    const auto fill = [=](auto reader) HWY_ATTR {
        for (uint32_t i = 0; i < count; i += LaneCount())
            hn::StoreU(reader.Next(), FloatTag(), out + i);
    };
    if (head.increment != 1.0 && head.high != head.low + 1)
        return fill(ApartReader(head, count));
    WithReader(head, count, fill);
}

/// Adds gain * envelope * what next gives to out.
template <class Next>
HWY_INLINE void Add(const float* envelope, float gain, uint32_t count, float* out, Next next) {
    const FloatTag d;
    const uint32_t lanes = LaneCount();
    const Floats level = Constant(gain);
    const auto sum = [=, &next](uint32_t i) HWY_ATTR {
        const Floats part = hn::Mul(hn::Mul(level, hn::LoadU(d, envelope + i)), next());
        return hn::Add(hn::LoadU(d, out + i), part);
    };
    uint32_t i = 0;
    for (; i + lanes <= count; i += lanes)
        hn::StoreU(sum(i), d, out + i);
    if (i < count) {
        const auto inside = hn::FirstN(d, count - i);
        hn::StoreU(hn::IfThenElse(inside, sum(i), hn::LoadU(d, out + i)), d, out + i);
    }
}

void Mix(const float* envelope, const float* x, float gain, uint32_t count, float* out) {
    Add(envelope, gain, count, out, [&x]() HWY_ATTR {
        const Floats now = hn::LoadU(FloatTag(), x);
        x += LaneCount();
        return now;
    });
}

void Play(const GrainKernels::ReadHead& head, const float* envelope, float gain, uint32_t count,
          float* out) {
    WithReader(head, count, [=](auto reader) HWY_ATTR {
        Add(envelope, gain, count, out, [&reader]() HWY_ATTR { return reader.Next(); });
    });
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

const GrainKernels& Table() {
    static const GrainKernels table{
        &FillEnvelope, &Play, &Interpolate, &Walk, &Crossfade, &Mix, hwy::TargetName(HWY_TARGET)};
    return table;
}

}  // namespace HWY_NAMESPACE
}  // namespace Quorvan::dsp
HWY_AFTER_NAMESPACE();

#endif
