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
#include "granular/GrainPhases-inl.h"
#include "granular/GrainReads-inl.h"
#include "granular/GrainVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Quorvan::dsp {
namespace HWY_NAMESPACE {

void FillEnvelope(const GrainKernels::Envelope& e, double elapsed, double step, uint32_t count,
                  float* out) {
    const double inverse = 1.0 / static_cast<double>(e.length);
    const Stretch stretch{elapsed, step, elapsed * inverse, step * inverse};
    WithShape(static_cast<uint32_t>(e.shape), [&](auto shape) HWY_ATTR {
        FillShape<typename decltype(shape)::Type>(e, stretch, count, out);
    });
}

void Interpolate(const GrainKernels::ReadHead& head, uint32_t count, float* out) {
    const auto fill = [=](auto reader) HWY_ATTR {
        for (size_t i = 0; i < count; i += LaneCount())
            hn::StoreU(reader.Next(), FloatTag(), out + i);
    };
    if (head.increment != 1.0 && head.high != head.low + 1)
        return fill(ApartReader(head, count));
    double positions[kDoubles] = {head.position};
    double increments[kDoubles] = {head.increment};
    uint32_t counts[kDoubles] = {count};
    Courses courses;
    FillCourses(positions, increments, counts, 0, courses);
    WithPace(courses.pace[0], [&](auto reader) HWY_ATTR {
        fill(typename decltype(reader)::Type(head, count, Course{courses, 0}));
    });
}

void Shape(const float* envelope, float gain, uint32_t count, float* x) {
    const FloatTag d;
    const Floats level = Constant(gain);
    for (uint32_t i = 0; i < count; i += LaneCount()) {
        const Floats under = hn::Mul(level, hn::LoadU(d, envelope + i));
        hn::StoreU(hn::Mul(under, hn::LoadU(d, x + i)), d, x + i);
    }
}

/// Reads the tape under the envelope that stands in out.
template <class Reader>
HWY_INLINE void ReadVoice(const GrainKernels::Voices& voices, size_t v, const Courses& courses) {
    const FloatTag d;
    const float* const tape = voices.tape[v];
    float* const out = voices.out[v];
    const size_t count = voices.count[v];
    const Floats level = Constant(voices.gain[v]);
    Reader reader({tape, tape + 1, voices.position[v], voices.increment[v]}, voices.count[v],
                  Course{courses, v});
    for (size_t i = 0; i < count; i += LaneCount()) {
        const Floats under = hn::Mul(level, hn::LoadU(d, out + i));
        hn::StoreU(hn::Mul(under, reader.Next()), d, out + i);
    }
}

/// Numbers of the voices that have one of kKinds kinds each.
template <uint32_t kKinds>
class Kinds {
public:
    HWY_INLINE void Add(uint32_t kind, uint32_t voice) {
        numbers[kind][counts[kind]++] = static_cast<uint8_t>(voice);
    }
    /// Calls use(kind, voice numbers, how many) for all kinds that there are.
    template <class Use>
    HWY_INLINE void ForEach(const Use& use) const {
        for (uint32_t kind = 0; kind < kKinds; ++kind)
            if (counts[kind] > 0)
                use(kind, numbers[kind], counts[kind]);
    }

private:
    uint8_t numbers[kKinds][GrainKernels::kVoices];
    uint32_t counts[kKinds] = {};
};

/// Envelopes and the tape one after the other, each for all voices of one kind at a time: which way
/// the next voice goes would be a guess, and a wrong one takes as long as two vectors.
void Play(const GrainKernels::Voices& voices, uint32_t number) {
    Courses courses;
    Phases phases;
    for (size_t v = 0; v < number; v += kDoubles) {
        FillCourses(voices.position, voices.increment, voices.count, v, courses);
        FillPhases(voices.length, voices.elapsed, voices.increment, v, phases);
    }
    Kinds<kShapes + 1> shapes;
    Kinds<kPaces> paces;
    for (uint32_t v = 0; v < number; ++v) {
        shapes.Add(static_cast<uint32_t>(voices.shape[v]), v);
        paces.Add(static_cast<uint32_t>(courses.pace[v]), v);
    }
    shapes.ForEach([&](uint32_t kind, const uint8_t* list, uint32_t count) HWY_ATTR {
        if (kind == GrainKernels::Voices::kGiven)
            return;
        WithShape(kind, [&](auto shape) HWY_ATTR {
            for (uint32_t i = 0; i < count; ++i) {
                const size_t v = list[i];
                const Stretch stretch{voices.elapsed[v], std::abs(voices.increment[v]),
                                      phases.start[v], phases.step[v]};
                Grain& grain = *voices.grain[v];
                const GrainKernels::Envelope envelope{grain.shape, grain.shapeA, grain.shapeB,
                                                      voices.length[v], voices.attackSamples};
                const uint32_t samples = voices.count[v];
                float* const out = voices.out[v];
                FillShape<typename decltype(shape)::Type>(envelope, stretch, samples, out);
                grain.envelope = out[samples - 1];
            }
        });
    });
    paces.ForEach([&](uint32_t kind, const uint8_t* list, uint32_t count) HWY_ATTR {
        WithPace(static_cast<int32_t>(kind), [&](auto reader) HWY_ATTR {
            for (uint32_t i = 0; i < count; ++i)
                ReadVoice<typename decltype(reader)::Type>(voices, list[i], courses);
        });
    });
}

/// Adds the rows' next kVectors vectors, whose sums don't wait for each other.
template <size_t kVectors>
HWY_INLINE void AddColumns(const float* const* rows, uint32_t number, uint32_t at, float* sum) {
    const FloatTag d;
    Floats total[kVectors];
    for (size_t v = 0; v < kVectors; ++v)
        total[v] = hn::LoadU(d, sum + at + v * LaneCount());
    for (uint32_t r = 0; r < number; ++r)
        for (size_t v = 0; v < kVectors; ++v)
            total[v] = hn::Add(total[v], hn::LoadU(d, rows[r] + at + v * LaneCount()));
    for (size_t v = 0; v < kVectors; ++v)
        hn::StoreU(total[v], d, sum + at + v * LaneCount());
}

void Add(const float* const* rows, uint32_t number, uint32_t count, float* sum) {
    const uint32_t lanes = LaneCount();
    uint32_t i = 0;
    for (; i + 2 * lanes < count; i += 3 * lanes)
        AddColumns<3>(rows, number, i, sum);
    for (; i < count; i += lanes)
        AddColumns<1>(rows, number, i, sum);
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
        &FillEnvelope, &Play,  &Interpolate, &Walk,
        &Crossfade,    &Shape, &Add,         hwy::TargetName(HWY_TARGET)};
    return table;
}

}  // namespace HWY_NAMESPACE
}  // namespace Quorvan::dsp
HWY_AFTER_NAMESPACE();

#endif
