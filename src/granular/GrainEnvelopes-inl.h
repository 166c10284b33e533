// The eight grain envelopes in the vectors of one instruction set. Included once for each set.
#if defined(QUORVAN_GRAIN_ENVELOPES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QUORVAN_GRAIN_ENVELOPES_INL_H
#undef QUORVAN_GRAIN_ENVELOPES_INL_H
#else
#define QUORVAN_GRAIN_ENVELOPES_INL_H
#endif

#include <cstdint>

#include "granular/GrainVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Quorvan::dsp {
namespace HWY_NAMESPACE {

/// The power of two of the envelopes; its form is part of the sound.
HWY_INLINE Floats Pow2(Floats x) {
    const FloatTag d;
    const IntTag di;
    const Floats v = hn::Max(x, Constant(-126.0f));
    const Floats up = hn::IfThenElseZero(hn::Lt(x, hn::Zero(d)), Constant(1.0f));
    const Floats f = hn::Add(hn::Sub(v, hn::Trunc(v)), up);
    const Floats ratio = hn::Div(Constant(27.728024f), hn::Sub(Constant(4.8425255f), f));
    const Floats sum = hn::Sub(hn::Add(hn::Add(ratio, v), Constant(121.274055f)),
                               hn::Mul(Constant(1.4901291f), f));
    return hn::BitCast(d, hn::ConvertTo(di, hn::Mul(sum, Constant(8388608.0f))));
}

HWY_INLINE Floats Exp(Floats x) { return Pow2(hn::Mul(x, Constant(1.442695f))); }

/// Parabola sine of turns at or above 0.
HWY_INLINE Floats SineOfTurn(Floats turns) {
    const Floats turn = hn::Mul(hn::Sub(turns, hn::Trunc(turns)), Constant(6.2831855f));
    const auto late = hn::Gt(turn, Constant(3.1415927f));
    const Floats a = hn::Sub(turn, hn::IfThenElseZero(late, Constant(6.2831855f)));
    const Floats slope = hn::Sub(Constant(1.2732395f), hn::Mul(Constant(0.40528473f), hn::Abs(a)));
    return hn::Mul(slope, a);
}

/// factor * (|y| * y - y): bends the parabola towards the sine.
HWY_INLINE Floats Bend(Floats y, float factor) {
    return hn::Mul(Constant(factor), hn::Sub(hn::Mul(hn::Abs(y), y), y));
}

/// Raised-cosine rise at both ends of the grain, 1 between.
HWY_INLINE Floats RaisedEdge(Floats x, float p, float q) {
    const Floats one = Constant(1.0f);
    const Floats left = hn::Sub(one, x);
    const auto rising = hn::Lt(x, Constant(q));
    const auto flat = hn::And(hn::Ge(x, Constant(q)), hn::Ge(left, Constant(q)));
    if (hn::AllTrue(FloatTag(), flat))  // most of the grain, in most grains
        return one;
    const Floats along = hn::IfThenElse(rising, x, left);
    const Floats y = SineOfTurn(hn::Add(hn::Div(along, Constant(p)), Constant(0.75f)));
    const Floats edge =
        hn::Add(hn::Add(hn::Mul(Constant(0.5f), y), Bend(y, 0.1125f)), Constant(0.5f));
    return hn::IfThenElse(flat, one, edge);
}

HWY_INLINE Floats Triangle(Floats x, float peak) {
    const Floats one = Constant(1.0f);
    const auto rising = hn::Le(x, Constant(peak));
    const Floats above = hn::IfThenElse(rising, x, hn::Sub(x, one));
    return hn::Div(above, hn::IfThenElse(rising, Constant(peak), Constant(peak - 1.0f)));
}

HWY_INLINE Floats Trapezoid(Floats x, float edge) {
    const Floats one = Constant(1.0f);
    const Floats left = hn::Sub(one, x);
    const Floats slope =
        hn::Div(hn::IfThenElse(hn::Lt(x, Constant(edge)), x, left), Constant(edge));
    const auto flat = hn::And(hn::Ge(x, Constant(edge)), hn::Ge(left, Constant(edge)));
    return hn::IfThenElse(flat, one, slope);
}

HWY_INLINE Floats Gaussian(Floats x, float b) {
    const Floats centred = hn::Sub(x, Constant(0.5f));
    return Exp(hn::Mul(hn::Mul(centred, Constant(b)), hn::Mul(centred, Constant(-0.5f))));
}

/// Below this the quotient is taken for its limit. The turn is rounded to steps of 2^-21, that is y
/// to 1.5e-6 either way: at 2^-13 the quotient is 1.2 % off, nearer it may be anything from 0 to
/// 1.7. The sine's own slope, 0.987, keeps it 1.3 % from the limit anyway.
constexpr float kSincCentre = 0x1p-13f;

HWY_INLINE Floats WindowedSinc(Floats x, float b) {
    const Floats y = hn::Mul(Constant(b * 31.415928f), hn::Sub(x, Constant(0.5f)));
    const Floats z = SineOfTurn(hn::Add(hn::Mul(y, Constant(0.15915494f)), Constant(5.0f)));
    const Floats sine = hn::Add(z, Bend(z, 0.225f));
    const Floats window = RaisedEdge(x, 0.2f, 0.1f);
    const auto centre = hn::Lt(hn::Abs(y), Constant(kSincCentre));
    const Floats lobe = hn::Div(hn::Mul(window, sine), y);
    return hn::IfThenElse(centre, Constant(1.0f), lobe);
}

HWY_INLINE Floats Fall(Floats x, const GrainKernels::Envelope& e) {
    const Floats one = Constant(1.0f);
    const Floats exponent = hn::Mul(Constant(e.shapeA * 10.0f), hn::Sub(one, x));
    return hn::Mul(hn::Sub(Exp(exponent), one), Constant(e.shapeB));
}

/// The exponential of the percussive shapes: 1 where the attack meets it, 0 at phase 1.
HWY_INLINE Floats Decay(Floats behindAttack, const GrainKernels::Envelope& e) {
    const Floats one = Constant(1.0f);
    const Floats steep =
        hn::Mul(hn::Mul(behindAttack, Constant(e.shapeA)), Constant(e.length * -10.0f));
    const Floats exponent = hn::Div(steep, Constant(e.length - e.attackSamples));
    return hn::Sub(one, hn::Mul(hn::Sub(Exp(exponent), one), Constant(e.shapeB)));
}

/// A fixed attack, then an exponential fall that reaches 0 at the end of the grain.
HWY_INLINE Floats Percussive(Floats x, const GrainKernels::Envelope& e) {
    const FloatTag d;
    const Floats attack = Constant(e.attackSamples / e.length);
    const Floats rise = hn::Mul(Constant(e.length / e.attackSamples), x);
    const Floats fall = Decay(hn::Sub(x, attack), e);
    const Floats behind = hn::IfThenElse(hn::Ge(x, Constant(1.0f)), hn::Zero(d), fall);
    return hn::IfThenElse(hn::Lt(x, attack), rise, behind);
}

/// The percussive shape run backwards. Its edges belong to the other side than the forward one's.
HWY_INLINE Floats MirroredPercussive(Floats x, const GrainKernels::Envelope& e) {
    const FloatTag d;
    const float attack = e.attackSamples / e.length;
    const Floats left = hn::Sub(Constant(1.0f), x);
    const Floats rise = hn::Mul(Constant(e.length / e.attackSamples), left);
    const Floats fall = Decay(hn::Sub(left, Constant(attack)), e);
    const Floats behind = hn::IfThenElse(hn::Le(x, hn::Zero(d)), hn::Zero(d), fall);
    return hn::IfThenElse(hn::Ge(x, Constant(1.0f - attack)), rise, behind);
}

/// Calls shape on the phase of every sample: source samples read over the grain's length.
template <class Shape>
HWY_INLINE void ForEachPhase(float length, double elapsed, double step, uint32_t count, float* out,
                             const Shape& shape) {
    const Doubles whole = hn::Set(DoubleTag(), static_cast<double>(length));
    Line read(elapsed, step);
    for (uint32_t i = 0; i < count; i += LaneCount()) {
        const auto first = hn::DemoteTo(HalfTag(), hn::Div(read.Next(), whole));
#if HWY_TARGET == HWY_SCALAR
        const Floats x = first;
#else
        const auto second = hn::DemoteTo(HalfTag(), hn::Div(read.Next(), whole));
        const Floats x = hn::Combine(FloatTag(), second, first);
#endif
        hn::StoreU(shape(x), FloatTag(), out + i);
    }
}

void FillEnvelope(const GrainKernels::Envelope& e, double elapsed, double step, uint32_t count,
                  float* out) {
    const auto fill = [&](const auto& shape)
                          HWY_ATTR { ForEachPhase(e.length, elapsed, step, count, out, shape); };
    switch (e.shape) {
        case 0:
            return fill([&e](Floats x) HWY_ATTR { return Triangle(x, e.shapeB); });
        case 1:
            return fill([&e](Floats x) HWY_ATTR { return Trapezoid(x, e.shapeB); });
        case 2:
            return fill([&e](Floats x) HWY_ATTR { return RaisedEdge(x, e.shapeA, e.shapeB); });
        case 3:
            return fill([&e](Floats x) HWY_ATTR { return Gaussian(x, e.shapeB); });
        case 4:
            return fill([&e](Floats x) HWY_ATTR { return WindowedSinc(x, e.shapeB); });
        case 5:
            return fill([&e](Floats x) HWY_ATTR { return Fall(x, e); });
        case 6:
            return fill([&e](Floats x) HWY_ATTR { return Percussive(x, e); });
        default:
            return fill([&e](Floats x) HWY_ATTR { return MirroredPercussive(x, e); });
    }
}

}  // namespace HWY_NAMESPACE
}  // namespace Quorvan::dsp
HWY_AFTER_NAMESPACE();

#endif
