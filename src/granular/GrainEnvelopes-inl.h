// The eight grain envelopes in the vectors of one instruction set. Included once for each set.
#if defined(QUORVAN_GRAIN_ENVELOPES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QUORVAN_GRAIN_ENVELOPES_INL_H
#undef QUORVAN_GRAIN_ENVELOPES_INL_H
#else
#define QUORVAN_GRAIN_ENVELOPES_INL_H
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "granular/GrainPhases-inl.h"
#include "granular/GrainVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Quorvan::dsp {
namespace HWY_NAMESPACE {

constexpr float kLowestPower = -126.0f;

/// Bits of a power of two, as a number, for the exponent v and its fraction f.
HWY_INLINE Floats Pow2Bits(Floats v, Floats f) {
    const Floats ratio = hn::Div(Constant(27.728024f), hn::Sub(Constant(4.8425255f), f));
    const Floats sum = hn::Sub(hn::Add(hn::Add(ratio, v), Constant(121.274055f)),
                               hn::Mul(Constant(1.4901291f), f));
    return hn::Mul(sum, Constant(8388608.0f));
}

/// The power of two of the envelopes; its form is part of the sound.
HWY_INLINE Floats Pow2(Floats x) {
    const Floats v = hn::Max(x, Constant(kLowestPower));
    const Floats up = hn::IfThenElseZero(hn::Lt(x, hn::Zero(FloatTag())), Constant(1.0f));
    const Floats bits = Pow2Bits(v, hn::Add(hn::Sub(v, WholeInRange(v)), up));
    return hn::BitCast(FloatTag(), hn::ConvertTo(IntTag(), bits));
}

/// The same of x from kLowestPower to below 0.
HWY_INLINE Floats FallingPow2(Floats x) {
    const Floats bits = Pow2Bits(x, hn::Add(hn::Sub(x, WholeInRange(x)), Constant(1.0f)));
    return hn::BitCast(FloatTag(), TruncatedInRange(bits));
}

/// The same of x from 0 to below 127.
HWY_INLINE Floats RisingPow2(Floats x) {
    return hn::BitCast(FloatTag(), TruncatedInRange(Pow2Bits(x, hn::Sub(x, WholeInRange(x)))));
}

constexpr float kBinaryLogOfE = 1.442695f;

/// Parabola sine of turns at or above 0.
HWY_INLINE Floats SineOfTurn(Floats turns) {
    const Floats part = hn::Sub(turns, WholeInRange(turns));
    const auto late = hn::Gt(part, Constant(0.5f));
    const Floats back = hn::IfThenElseZero(late, Constant(6.2831855f));
    const Floats a = hn::Sub(hn::Mul(part, Constant(6.2831855f)), back);
    const Floats slope = hn::Sub(Constant(1.2732395f), hn::Mul(Constant(0.40528473f), hn::Abs(a)));
    return hn::Mul(slope, a);
}

/// factor * (|y| * y - y): bends the parabola towards the sine.
HWY_INLINE Floats Bend(Floats y, float factor) {
    return hn::Mul(Constant(factor), hn::Sub(hn::Mul(hn::Abs(y), y), y));
}

// The shapes: what belongs to the grain is worked out by the constructor, ahead of the samples.
// Some have stretches on which fewer operations give the same: IsPlain tells, from the first and
// the last of phases that rise, whether all lie on one, and Plain has the envelope there, or kPlain
// where it is one number. Likewise SideOf tells of the edges, and OnEdge has the envelope there.
// The sets without vectors, by which the others are judged, go without.

/// Edges of a grain.
enum class Edge { None, Rising, Falling };

struct Triangle {
    HWY_INLINE explicit Triangle(const GrainKernels::Envelope& e)
        : peak(Constant(e.shapeB)), behind(Constant(e.shapeB - 1.0f)) {}

    HWY_INLINE Floats operator()(Floats x) const {
        const auto rising = hn::Le(x, peak);
        const Floats above = hn::IfThenElse(rising, x, hn::Sub(x, Constant(1.0f)));
        return hn::Div(above, hn::IfThenElse(rising, peak, behind));
    }

    Floats peak, behind;
};

struct Trapezoid {
    static constexpr float kPlain = 1.0f;

    HWY_INLINE explicit Trapezoid(const GrainKernels::Envelope& e) : edge(Constant(e.shapeB)) {}

    HWY_INLINE Floats operator()(Floats x) const {
        const Floats one = Constant(1.0f);
        const Floats left = hn::Sub(one, x);
        const auto flat = hn::And(hn::Ge(x, edge), hn::Ge(left, edge));
        if (hn::AllTrue(FloatTag(), flat))
            return one;
        const Floats slope = hn::Div(hn::IfThenElse(hn::Lt(x, edge), x, left), edge);
        return hn::IfThenElse(flat, one, slope);
    }

    HWY_INLINE bool IsPlain(float first, float last) const {
        const float rise = hn::GetLane(edge);
        return first >= rise && 1.0f - last >= rise;
    }

    Floats edge;
};

/// Raised-cosine rise at both ends of the grain, 1 between.
struct RaisedEdge {
    static constexpr float kPlain = 1.0f;

    HWY_INLINE RaisedEdge(float turn, float edge) : p(Constant(turn)), q(Constant(edge)) {}
    HWY_INLINE explicit RaisedEdge(const GrainKernels::Envelope& e)
        : RaisedEdge(e.shapeA, e.shapeB) {}

    HWY_INLINE Floats operator()(Floats x) const {
        const Floats one = Constant(1.0f);
        const Floats left = hn::Sub(one, x);
        const auto rising = hn::Lt(x, q);
        const auto flat = hn::And(hn::Ge(x, q), hn::Ge(left, q));
        if (hn::AllTrue(FloatTag(), flat))  // most of the grain, in most grains
            return one;
        return hn::IfThenElse(flat, one, Rise(hn::IfThenElse(rising, x, left)));
    }

    HWY_INLINE bool IsPlain(float first, float last) const {
        const float edge = hn::GetLane(q);
        return first >= edge && 1.0f - last >= edge;
    }
    HWY_INLINE Edge SideOf(float first, float last) const {
        const float edge = hn::GetLane(q);
        if (last < edge)
            return Edge::Rising;
        return first >= edge && 1.0f - first < edge ? Edge::Falling : Edge::None;
    }
    HWY_INLINE Floats OnEdge(Floats x, Edge side) const {
        return Rise(side == Edge::Rising ? x : hn::Sub(Constant(1.0f), x));
    }

private:
    HWY_INLINE Floats Rise(Floats along) const {
        const Floats y = SineOfTurn(hn::Add(hn::Div(along, p), Constant(0.75f)));
        return hn::Add(hn::Add(hn::Mul(Constant(0.5f), y), Bend(y, 0.1125f)), Constant(0.5f));
    }

    Floats p, q;
};

struct Gaussian {
    HWY_INLINE explicit Gaussian(const GrainKernels::Envelope& e)
        : steepness(e.shapeB), b(Constant(e.shapeB)) {}

    HWY_INLINE Floats operator()(Floats x) const { return Pow2(Power(x)); }

    /// On one side of the middle, and where powers are not held.
    HWY_INLINE bool IsPlain(float first, float last) const {
        const float one = PowerAt(first);
        const float other = PowerAt(last);
        return (first > 0.5f || last < 0.5f) && std::min(one, other) >= kLowestPower &&
               std::max(one, other) < 0.0f;
    }
    HWY_INLINE Floats Plain(Floats x) const { return FallingPow2(Power(x)); }

private:
    HWY_INLINE Floats Power(Floats x) const {
        const Floats centred = hn::Sub(x, Constant(0.5f));
        return hn::Mul(hn::Mul(hn::Mul(centred, b), centred), Constant(-0.5f * kBinaryLogOfE));
    }
    HWY_INLINE float PowerAt(float x) const {
        const float centred = x - 0.5f;
        return ((centred * steepness) * centred) * (-0.5f * kBinaryLogOfE);
    }

    float steepness;
    Floats b;
};

/// Below this the quotient is taken for its limit. The turn is rounded to steps of 2^-21, that is y
/// to 1.5e-6 either way: at 2^-13 the quotient is 1.2 % off, nearer it may be anything from 0 to
/// 1.7. The sine's own slope, 0.987, keeps it 1.3 % from the limit anyway.
constexpr float kSincCentre = 0x1p-13f;

struct WindowedSinc {
    HWY_INLINE explicit WindowedSinc(const GrainKernels::Envelope& e)
        : lobes(Constant(e.shapeB * 31.415928f)), window(0.2f, 0.1f) {}

    HWY_INLINE Floats operator()(Floats x) const {
        const Floats y = Angle(x);
        const auto centre = hn::Lt(hn::Abs(y), Constant(kSincCentre));
        const Floats lobe = hn::Div(hn::Mul(window(x), Sine(y)), y);
        return hn::IfThenElse(centre, Constant(1.0f), lobe);
    }

    /// Where the window is 1, on one side of the middle.
    HWY_INLINE bool IsPlain(float first, float last) const {
        const float scale = hn::GetLane(lobes);
        return window.IsPlain(first, last) &&
               (scale * (first - 0.5f) >= kSincCentre || scale * (last - 0.5f) <= -kSincCentre);
    }
    HWY_INLINE Floats Plain(Floats x) const {
        const Floats y = Angle(x);
        return hn::Div(Sine(y), y);
    }
    /// Of the window, where it is away from the middle.
    HWY_INLINE Edge SideOf(float first, float last) const {
        const bool apart = hn::GetLane(lobes) * 0.25f >= kSincCentre;
        return apart ? window.SideOf(first, last) : Edge::None;
    }
    HWY_INLINE Floats OnEdge(Floats x, Edge side) const {
        const Floats y = Angle(x);
        return hn::Div(hn::Mul(window.OnEdge(x, side), Sine(y)), y);
    }

private:
    HWY_INLINE Floats Angle(Floats x) const { return hn::Mul(lobes, hn::Sub(x, Constant(0.5f))); }
    static HWY_INLINE Floats Sine(Floats y) {
        const Floats z = SineOfTurn(hn::Add(hn::Mul(y, Constant(0.15915494f)), Constant(5.0f)));
        return hn::Add(z, Bend(z, 0.225f));
    }

    Floats lobes;
    RaisedEdge window;
};

struct Fall {
    HWY_INLINE explicit Fall(const GrainKernels::Envelope& e)
        : steepness(Constant(e.shapeA * 10.0f)), scale(Constant(e.shapeB)) {}

    HWY_INLINE Floats operator()(Floats x) const { return Behind(Pow2(Power(x))); }

    HWY_INLINE bool IsPlain(float, float last) const { return last <= 1.0f; }
    HWY_INLINE Floats Plain(Floats x) const { return Behind(RisingPow2(Power(x))); }

private:
    HWY_INLINE Floats Power(Floats x) const {
        const Floats exponent = hn::Mul(steepness, hn::Sub(Constant(1.0f), x));
        return hn::Mul(exponent, Constant(kBinaryLogOfE));
    }
    HWY_INLINE Floats Behind(Floats power) const {
        return hn::Mul(hn::Sub(power, Constant(1.0f)), scale);
    }

    Floats steepness, scale;
};

/// The exponential of the percussive shapes: 1 where the attack meets it, 0 at phase 1.
struct Decay {
    HWY_INLINE explicit Decay(const GrainKernels::Envelope& e)
        : shape(e),
          a(Constant(e.shapeA)),
          down(Constant(e.length * -10.0f)),
          way(Constant(e.length - e.attackSamples)),
          scale(Constant(e.shapeB)) {}

    HWY_INLINE Floats operator()(Floats behindAttack) const {
        return Behind(Pow2(Power(behindAttack)));
    }

    /// Between two places where powers are not held, at neither of which it is 1.
    HWY_INLINE bool IsPlain(float nearest, float farthest) const {
        return PowerAt(nearest) < 0.0f && PowerAt(farthest) >= kLowestPower;
    }
    HWY_INLINE Floats Plain(Floats behindAttack) const {
        return Behind(FallingPow2(Power(behindAttack)));
    }

private:
    HWY_INLINE Floats Power(Floats x) const {
        const Floats exponent = hn::Div(hn::Mul(hn::Mul(x, a), down), way);
        return hn::Mul(exponent, Constant(kBinaryLogOfE));
    }
    HWY_INLINE float PowerAt(float x) const {
        return x * shape.shapeA * (shape.length * -10.0f) / (shape.length - shape.attackSamples) *
               kBinaryLogOfE;
    }
    HWY_INLINE Floats Behind(Floats power) const {
        const Floats one = Constant(1.0f);
        return hn::Sub(one, hn::Mul(hn::Sub(power, one), scale));
    }

    GrainKernels::Envelope shape;
    Floats a, down, way, scale;
};

/// A fixed attack, then an exponential fall that reaches 0 at the end of the grain.
struct Percussive {
    HWY_INLINE explicit Percussive(const GrainKernels::Envelope& e)
        : attack(Constant(e.attackSamples / e.length)),
          rise(Constant(e.length / e.attackSamples)),
          decay(e) {}

    HWY_INLINE Floats operator()(Floats x) const {
        const Floats fall = decay(hn::Sub(x, attack));
        const auto over = hn::Ge(x, Constant(1.0f));
        const Floats behind = hn::IfThenElse(over, hn::Zero(FloatTag()), fall);
        return hn::IfThenElse(hn::Lt(x, attack), hn::Mul(rise, x), behind);
    }

    HWY_INLINE bool IsPlain(float first, float last) const {
        const float from = hn::GetLane(attack);
        return first >= from && last < 1.0f && decay.IsPlain(first - from, last - from);
    }
    HWY_INLINE Floats Plain(Floats x) const { return decay.Plain(hn::Sub(x, attack)); }

    Floats attack, rise;
    Decay decay;
};

/// The percussive shape run backwards. Its edges belong to the other side than the forward one's.
struct MirroredPercussive {
    HWY_INLINE explicit MirroredPercussive(const GrainKernels::Envelope& e)
        : attack(Constant(e.attackSamples / e.length)),
          turn(Constant(1.0f - e.attackSamples / e.length)),
          rise(Constant(e.length / e.attackSamples)),
          decay(e) {}

    HWY_INLINE Floats operator()(Floats x) const {
        const Floats zero = hn::Zero(FloatTag());
        const Floats left = hn::Sub(Constant(1.0f), x);
        const Floats fall = decay(hn::Sub(left, attack));
        const Floats behind = hn::IfThenElse(hn::Le(x, zero), zero, fall);
        return hn::IfThenElse(hn::Ge(x, turn), hn::Mul(rise, left), behind);
    }

    HWY_INLINE bool IsPlain(float first, float last) const {
        const float rest = hn::GetLane(attack);
        return first > 0.0f && last < hn::GetLane(turn) &&
               decay.IsPlain(1.0f - last - rest, 1.0f - first - rest);
    }
    HWY_INLINE Floats Plain(Floats x) const {
        return decay.Plain(hn::Sub(hn::Sub(Constant(1.0f), x), attack));
    }

    Floats attack, turn, rise;
    Decay decay;
};

constexpr uint32_t kShapes = 8;

/// Calls use with the TypeOf a shape.
template <class Use>
HWY_INLINE void WithShape(uint32_t shape, const Use& use) {
    switch (shape) {
        case 0:
            return use(TypeOf<Triangle>());
        case 1:
            return use(TypeOf<Trapezoid>());
        case 2:
            return use(TypeOf<RaisedEdge>());
        case 3:
            return use(TypeOf<Gaussian>());
        case 4:
            return use(TypeOf<WindowedSinc>());
        case 5:
            return use(TypeOf<Fall>());
        case 6:
            return use(TypeOf<Percussive>());
        default:
            return use(TypeOf<MirroredPercussive>());
    }
}

/// What the envelope is worked out from at the first sample.
struct Stretch {
    double elapsed;  ///< source samples read
    double speed;    ///< and read each sample
    double start;    ///< elapsed over the length
    double step;     ///< speed over the length
};

/// One form of the envelope over the phases. Answers whether these were all clear.
template <class Form>
HWY_INLINE bool FillForm(const Form& form, PhaseLine phases, size_t count, float* out) {
    for (size_t i = 0; i < count; i += LaneCount())
        hn::StoreU(form(phases.Next()), FloatTag(), out + i);
    return phases.Clear();
}

/// The shortest form that holds from the first phase to the last.
template <class Shape>
HWY_INLINE bool FillShortest(const Shape& shape, float first, float last, const PhaseLine& phases,
                             size_t count, float* out) {
    if constexpr (requires { shape.Plain(Floats()); }) {
        if (shape.IsPlain(first, last)) {
            const auto form = [&](Floats x) HWY_ATTR { return shape.Plain(x); };
            return FillForm(form, phases, count, out);
        }
    }
    if constexpr (requires { shape.SideOf(first, last); }) {
        const Edge side = shape.SideOf(first, last);
        if (side != Edge::None) {
            const auto form = [&](Floats x) HWY_ATTR { return shape.OnEdge(x, side); };
            return FillForm(form, phases, count, out);
        }
    }
    return FillForm(shape, phases, count, out);
}

/// The envelope over one stretch.
template <class Shape>
HWY_INLINE void FillShape(const GrainKernels::Envelope& e, const Stretch& stretch, uint32_t frames,
                          float* out) {
    const FloatTag d;
    const Shape shape(e);
    const size_t count = frames;
#if HWY_TARGET != HWY_SCALAR
    const PhaseLine phases(stretch.start, stretch.step);
#if HWY_TARGET == HWY_EMU128
    if (HWY_LIKELY(FillForm(shape, phases, count, out)))
        return;
#else
    const auto steps = static_cast<double>(count - 1);
    const auto first = static_cast<float>(stretch.start);
    const auto last = static_cast<float>(stretch.start + stretch.step * steps);
    if constexpr (requires { Shape::kPlain; }) {
        const auto whole = static_cast<double>(e.length);
        const double read = stretch.elapsed + stretch.speed * steps;
        if (shape.IsPlain(first, last) && shape.IsPlain(static_cast<float>(stretch.elapsed / whole),
                                                        static_cast<float>(read / whole))) {
            for (size_t i = 0; i < count; i += LaneCount())
                hn::StoreU(Constant(Shape::kPlain), d, out + i);
            return;
        }
    }
    if (HWY_LIKELY(FillShortest(shape, first, last, phases, count, out)))
        return;
#endif
#endif
    DividePhases(e.length, stretch.elapsed, stretch.speed, frames, out);
    for (size_t i = 0; i < count; i += LaneCount())
        hn::StoreU(shape(hn::LoadU(d, out + i)), d, out + i);
}

}  // namespace HWY_NAMESPACE
}  // namespace Quorvan::dsp
HWY_AFTER_NAMESPACE();

#endif
