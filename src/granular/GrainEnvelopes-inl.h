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

// The shapes: what belongs to the grain is worked out by the constructor, ahead of the samples.

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

    Floats edge;
};

/// Raised-cosine rise at both ends of the grain, 1 between.
struct RaisedEdge {
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
        const Floats along = hn::IfThenElse(rising, x, left);
        const Floats y = SineOfTurn(hn::Add(hn::Div(along, p), Constant(0.75f)));
        const Floats edge =
            hn::Add(hn::Add(hn::Mul(Constant(0.5f), y), Bend(y, 0.1125f)), Constant(0.5f));
        return hn::IfThenElse(flat, one, edge);
    }

    Floats p, q;
};

struct Gaussian {
    HWY_INLINE explicit Gaussian(const GrainKernels::Envelope& e) : b(Constant(e.shapeB)) {}

    HWY_INLINE Floats operator()(Floats x) const {
        const Floats centred = hn::Sub(x, Constant(0.5f));
        return Exp(hn::Mul(hn::Mul(centred, b), hn::Mul(centred, Constant(-0.5f))));
    }

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
        const Floats y = hn::Mul(lobes, hn::Sub(x, Constant(0.5f)));
        const Floats z = SineOfTurn(hn::Add(hn::Mul(y, Constant(0.15915494f)), Constant(5.0f)));
        const Floats sine = hn::Add(z, Bend(z, 0.225f));
        const auto centre = hn::Lt(hn::Abs(y), Constant(kSincCentre));
        const Floats lobe = hn::Div(hn::Mul(window(x), sine), y);
        return hn::IfThenElse(centre, Constant(1.0f), lobe);
    }

    Floats lobes;
    RaisedEdge window;
};

struct Fall {
    HWY_INLINE explicit Fall(const GrainKernels::Envelope& e)
        : steepness(Constant(e.shapeA * 10.0f)), scale(Constant(e.shapeB)) {}

    HWY_INLINE Floats operator()(Floats x) const {
        const Floats one = Constant(1.0f);
        return hn::Mul(hn::Sub(Exp(hn::Mul(steepness, hn::Sub(one, x))), one), scale);
    }

    Floats steepness, scale;
};

/// The exponential of the percussive shapes: 1 where the attack meets it, 0 at phase 1.
struct Decay {
    HWY_INLINE explicit Decay(const GrainKernels::Envelope& e)
        : a(Constant(e.shapeA)),
          down(Constant(e.length * -10.0f)),
          way(Constant(e.length - e.attackSamples)),
          scale(Constant(e.shapeB)) {}

    HWY_INLINE Floats operator()(Floats behindAttack) const {
        const Floats one = Constant(1.0f);
        const Floats exponent = hn::Div(hn::Mul(hn::Mul(behindAttack, a), down), way);
        return hn::Sub(one, hn::Mul(hn::Sub(Exp(exponent), one), scale));
    }

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

/// From phases to the envelope there, in place.
template <class Shape>
HWY_INLINE void ShapePhases(const GrainKernels::Envelope& e, uint32_t count, float* x) {
    const Shape shape(e);
    for (uint32_t i = 0; i < count; i += LaneCount())
        hn::StoreU(shape(hn::LoadU(FloatTag(), x + i)), FloatTag(), x + i);
}

/// Whether vectors of products with an inverse have come to the same singles as the quotients
/// would. Such a product is up to 2.5 steps of double precision off the quotient, which doesn't
/// matter as long as it keeps further than that from the middle between two singles.
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
        const Ints beyond = hn::Sub(low, hn::Set(di, kMiddle - 4));
        nearest = hn::Min(nearest, hn::And(beyond, hn::Set(di, 2 * kMiddle - 8)));
#endif
    }
    HWY_INLINE bool Clear() const {
        return HWY_TARGET != HWY_SCALAR &&
               hn::AllTrue(IntTag(), hn::Gt(nearest, hn::Zero(IntTag())));
    }

private:
    static constexpr int32_t kMiddle = 1 << 28;
    Ints nearest;
};

/// How far the grain is at every sample: source samples read over its length. Both elapsed and step
/// are of so few digits that sums are exact.
HWY_INLINE void FillPhases(float length, double elapsed, double step, uint32_t count, float* out) {
    const Doubles whole = hn::Set(DoubleTag(), static_cast<double>(length));
    const Doubles inverse = hn::Set(DoubleTag(), 1.0 / static_cast<double>(length));
    const Doubles ahead = hn::Set(DoubleTag(), step * static_cast<double>(LaneCount()));
    const Line read(elapsed, step);
    const Doubles first = read.First();
    const Doubles second = read.Second();
    TieWatch ties;
    Doubles x = first;
    Doubles y = second;
    for (uint32_t i = 0; i < count; i += LaneCount()) {
        const Doubles p = hn::Mul(x, inverse);
        const Doubles q = hn::Mul(y, inverse);
        ties.Look(p, q);
        hn::StoreU(Narrow(p, q), FloatTag(), out + i);
        x = hn::Add(x, ahead);
        y = hn::Add(y, ahead);
    }
    if (HWY_LIKELY(ties.Clear()))
        return;
    x = first;
    y = second;
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
