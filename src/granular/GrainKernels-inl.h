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

HWY_BEFORE_NAMESPACE();
namespace Quorvan::dsp {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using FloatTag = hn::ScalableTag<float>;
using IntTag = hn::RebindToSigned<FloatTag>;
using Floats = hn::Vec<FloatTag>;

/// The power of two of the envelopes; its form is part of the sound.
HWY_INLINE Floats Pow2(Floats x) {
    const FloatTag d;
    const IntTag di;
    const Floats v = hn::Max(x, hn::Set(d, -126.0f));
    const Floats whole = hn::ConvertTo(d, hn::ConvertTo(di, v));
    const Floats up = hn::IfThenElseZero(hn::Lt(x, hn::Zero(d)), hn::Set(d, 1.0f));
    const Floats f = hn::Add(hn::Sub(v, whole), up);
    const Floats ratio = hn::Div(hn::Set(d, 27.728024f), hn::Sub(hn::Set(d, 4.8425255f), f));
    const Floats sum = hn::Sub(hn::Add(hn::Add(ratio, v), hn::Set(d, 121.274055f)),
                               hn::Mul(hn::Set(d, 1.4901291f), f));
    return hn::BitCast(d, hn::ConvertTo(di, hn::Mul(sum, hn::Set(d, 8388608.0f))));
}

HWY_INLINE Floats Exp(Floats x) { return Pow2(hn::Mul(x, hn::Set(FloatTag(), 1.442695f))); }

/// Parabola sine of turns at or above 0.
HWY_INLINE Floats SineOfTurn(Floats turns) {
    const FloatTag d;
    const IntTag di;
    const Floats frac = hn::Sub(turns, hn::ConvertTo(d, hn::ConvertTo(di, turns)));
    const Floats turn = hn::Mul(frac, hn::Set(d, 6.2831855f));
    const Floats back = hn::IfThenElseZero(hn::Gt(turn, hn::Set(d, 3.1415927f)),
                                           hn::Set(d, 6.2831855f));
    const Floats a = hn::Sub(turn, back);
    const Floats slope =
        hn::Sub(hn::Set(d, 1.2732395f), hn::Mul(hn::Set(d, 0.40528473f), hn::Abs(a)));
    return hn::Mul(slope, a);
}

/// factor * (|y| * y - y): bends the parabola towards the sine.
HWY_INLINE Floats Bend(Floats y, float factor) {
    const FloatTag d;
    return hn::Mul(hn::Set(d, factor), hn::Sub(hn::Mul(hn::Abs(y), y), y));
}

/// Raised-cosine rise at both ends of the grain, 1 between.
HWY_INLINE Floats RaisedEdge(Floats x, Floats inverseP, Floats q) {
    const FloatTag d;
    const Floats one = hn::Set(d, 1.0f);
    const Floats left = hn::Sub(one, x);
    const auto rising = hn::Lt(x, q);
    const auto flat = hn::And(hn::Ge(x, q), hn::Ge(left, q));
    const Floats t = hn::Add(hn::Mul(hn::IfThenElse(rising, x, left), inverseP),
                             hn::Set(d, 0.75f));
    const Floats y = SineOfTurn(t);
    const Floats edge = hn::Add(hn::Add(hn::Mul(hn::Set(d, 0.5f), y), Bend(y, 0.1125f)),
                                hn::Set(d, 0.5f));
    return hn::IfThenElse(flat, one, edge);
}

/// Calls shape on the phase of every sample: source samples read over the grain's length.
template <class Shape>
HWY_INLINE void ForEachPhase(const GrainKernels::Envelope& e, double elapsed, double step,
                             uint32_t count, float* out, const Shape& shape) {
    const hn::ScalableTag<double> dd;
    const hn::Rebind<float, decltype(dd)> half;
    const uint32_t lanes = static_cast<uint32_t>(hn::Lanes(dd));
    const double inverse = 1.0 / static_cast<double>(e.length);
    const auto scale = hn::Set(dd, inverse);
    const auto advance = hn::Set(dd, step * lanes);
    auto at = hn::Add(hn::Set(dd, elapsed), hn::Mul(hn::Iota(dd, 0.0), hn::Set(dd, step)));
#if HWY_TARGET == HWY_SCALAR
    for (uint32_t i = 0; i < count; i += lanes) {
        hn::StoreU(shape(hn::DemoteTo(half, hn::Mul(at, scale))), half, out + i);
        at = hn::Add(at, advance);
    }
#else
    const FloatTag d;
    for (uint32_t i = 0; i < count; i += 2 * lanes) {
        const auto low = hn::DemoteTo(half, hn::Mul(at, scale));
        at = hn::Add(at, advance);
        const auto high = hn::DemoteTo(half, hn::Mul(at, scale));
        at = hn::Add(at, advance);
        hn::StoreU(shape(hn::Combine(d, high, low)), d, out + i);
    }
#endif
}

HWY_INLINE Floats Percussive(const GrainKernels::Envelope& e, Floats x) {
    // A fixed attack, then an exponential fall that reaches 0 at the end of the grain.
    const FloatTag d;
    const float attack = e.attackSamples / e.length;
    const Floats rise = hn::Mul(hn::Set(d, e.length / e.attackSamples), x);
    const Floats exponent =
        hn::Mul(hn::Sub(x, hn::Set(d, attack)),
                hn::Set(d, e.shapeA * (e.length * -10.0f) / (e.length - e.attackSamples)));
    const Floats one = hn::Set(d, 1.0f);
    const Floats fall =
        hn::Sub(one, hn::Mul(hn::Sub(Exp(exponent), one), hn::Set(d, e.shapeB)));
    const Floats behind = hn::IfThenElse(hn::Ge(x, one), hn::Zero(d), fall);
    return hn::IfThenElse(hn::Lt(x, hn::Set(d, attack)), rise, behind);
}

/// The percussive shape run backwards. Its edges belong to the other side than the forward one's.
HWY_INLINE Floats MirroredPercussive(const GrainKernels::Envelope& e, Floats x) {
    const FloatTag d;
    const float attack = e.attackSamples / e.length;
    const Floats one = hn::Set(d, 1.0f);
    const Floats left = hn::Sub(one, x);
    const Floats rise = hn::Mul(hn::Set(d, e.length / e.attackSamples), left);
    const Floats exponent =
        hn::Mul(hn::Sub(left, hn::Set(d, attack)),
                hn::Set(d, e.shapeA * (e.length * -10.0f) / (e.length - e.attackSamples)));
    const Floats fall =
        hn::Sub(one, hn::Mul(hn::Sub(Exp(exponent), one), hn::Set(d, e.shapeB)));
    const Floats behind = hn::IfThenElse(hn::Le(x, hn::Zero(d)), hn::Zero(d), fall);
    return hn::IfThenElse(hn::Ge(x, hn::Set(d, 1.0f - attack)), rise, behind);
}

HWY_INLINE Floats WindowedSinc(const GrainKernels::Envelope& e, Floats x) {
    const FloatTag d;
    const Floats y = hn::Mul(hn::Set(d, e.shapeB * 31.415928f), hn::Sub(x, hn::Set(d, 0.5f)));
    const Floats z =
        SineOfTurn(hn::Add(hn::Mul(y, hn::Set(d, 0.15915494f)), hn::Set(d, 5.0f)));
    const Floats sine = hn::Add(z, Bend(z, 0.225f));
    const Floats window = RaisedEdge(x, hn::Set(d, 1.0f / 0.2f), hn::Set(d, 0.1f));
    const auto centre = hn::Eq(y, hn::Zero(d));
    const Floats one = hn::Set(d, 1.0f);
    const Floats lobe = hn::Div(hn::Mul(window, sine), hn::IfThenElse(centre, one, y));
    return hn::IfThenElse(centre, one, lobe);
}

void FillEnvelope(const GrainKernels::Envelope& e, double elapsed, double step, uint32_t count,
                  float* out) {
    const FloatTag d;
    const Floats one = hn::Set(d, 1.0f);
    const Floats b = hn::Set(d, e.shapeB);
    const auto run = [&](const auto& shape) HWY_ATTR {
        ForEachPhase(e, elapsed, step, count, out, shape);
    };
    switch (e.shape) {
        case 0:
            return run([&](Floats x) HWY_ATTR {
                const Floats fall = hn::Mul(hn::Sub(x, one), hn::Set(d, 1.0f / (e.shapeB - 1.0f)));
                const Floats rise = hn::Mul(x, hn::Set(d, 1.0f / e.shapeB));
                return hn::IfThenElse(hn::Le(x, b), rise, fall);
            });
        case 1:
            return run([&](Floats x) HWY_ATTR {
                const Floats inverse = hn::Set(d, 1.0f / e.shapeB);
                const Floats left = hn::Sub(one, x);
                const Floats fall = hn::IfThenElse(hn::Lt(left, b), hn::Mul(left, inverse), one);
                return hn::IfThenElse(hn::Lt(x, b), hn::Mul(x, inverse), fall);
            });
        case 2:
            return run([&](Floats x) HWY_ATTR {
                return RaisedEdge(x, hn::Set(d, 1.0f / e.shapeA), b);
            });
        case 3:
            return run([&](Floats x) HWY_ATTR {
                const Floats centred = hn::Sub(x, hn::Set(d, 0.5f));
                return Exp(hn::Mul(hn::Mul(centred, b), hn::Mul(centred, hn::Set(d, -0.5f))));
            });
        case 4:
            return run([&](Floats x) HWY_ATTR { return WindowedSinc(e, x); });
        case 5:
            return run([&](Floats x) HWY_ATTR {
                const Floats steep = hn::Set(d, e.shapeA * 10.0f);
                return hn::Mul(hn::Sub(Exp(hn::Mul(steep, hn::Sub(one, x))), one), b);
            });
        case 6:
            return run([&](Floats x) HWY_ATTR { return Percussive(e, x); });
        default:
            return run([&](Floats x) HWY_ATTR { return MirroredPercussive(e, x); });
    }
}

/// Positions in fixed point, 32 bits of fraction: over one block the error stays below 1e-7
/// samples.
HWY_INLINE int64_t ToFixed(double samples) { return std::llround(samples * 4294967296.0); }

HWY_INLINE void InterpolateAligned(const float* tape, double position, uint32_t count,
                                   float* out) {
    const FloatTag d;
    const double whole = std::floor(position);
    const Floats fraction = hn::Set(d, static_cast<float>(position - whole));
    const float* from = tape + static_cast<size_t>(whole);
    const uint32_t lanes = static_cast<uint32_t>(hn::Lanes(d));
    uint32_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const Floats x = hn::LoadU(d, from + i);
        const Floats next = hn::LoadU(d, from + i + 1);
        hn::StoreU(hn::Add(x, hn::Mul(hn::Sub(next, x), fraction)), d, out + i);
    }
    const float f = static_cast<float>(position - whole);
    for (; i < count; ++i)
        out[i] = from[i] + (from[i + 1] - from[i]) * f;
}

void Interpolate(const float* tape, double position, double increment, uint32_t count,
                 float* out) {
    if (increment == 1.0)
        return InterpolateAligned(tape, position, count, out);
    const FloatTag d;
    const IntTag di;
    constexpr uint32_t kChunk = 64;
    HWY_ALIGN float low[kChunk];
    HWY_ALIGN float high[kChunk];
    HWY_ALIGN int32_t fraction[kChunk];
    int64_t at = ToFixed(position);
    const int64_t step = ToFixed(increment);
    const uint32_t lanes = static_cast<uint32_t>(hn::Lanes(d));
    const Floats scale = hn::Set(d, 1.0f / 16777216.0f);
    for (uint32_t done = 0; done < count; done += kChunk) {
        const uint32_t chunk = std::min(kChunk, count - done);
        for (uint32_t i = 0; i < chunk; ++i) {
            const float* x = tape + (at >> 32);
            low[i] = x[0];
            high[i] = x[1];
            fraction[i] = static_cast<int32_t>((at >> 8) & 0xffffff);
            at += step;
        }
        for (uint32_t i = chunk; i % lanes != 0; ++i) {
            low[i] = high[i] = 0.0f;
            fraction[i] = 0;
        }
        for (uint32_t i = 0; i < chunk; i += lanes) {
            const Floats x = hn::Load(d, low + i);
            const Floats f = hn::Mul(hn::ConvertTo(d, hn::Load(di, fraction + i)), scale);
            hn::StoreU(hn::Add(x, hn::Mul(hn::Sub(hn::Load(d, high + i), x), f)), d,
                       out + done + i);
        }
    }
}

void Pick(const float* tape, double position, double increment, uint32_t count, float* out) {
    if (increment == 1.0) {
        std::memcpy(out, tape + static_cast<size_t>(position), count * sizeof(float));
        return;
    }
    int64_t at = ToFixed(position);
    const int64_t step = ToFixed(increment);
    for (uint32_t i = 0; i < count; ++i) {
        out[i] = tape[at >> 32];
        at += step;
    }
}

void Crossfade(float* x, const float* y, float start, float slope, uint32_t count) {
    const FloatTag d;
    const Floats one = hn::Set(d, 1.0f);
    const uint32_t lanes = static_cast<uint32_t>(hn::Lanes(d));
    const auto blend = [&](Floats c, Floats from, Floats to) HWY_ATTR {
        const Floats held = hn::Min(hn::Max(c, hn::Zero(d)), one);
        return hn::Add(hn::Mul(from, held), hn::Mul(hn::Sub(one, held), to));
    };
    uint32_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const Floats index = hn::Iota(d, static_cast<float>(i));
        const Floats c = hn::Add(hn::Set(d, start), hn::Mul(index, hn::Set(d, slope)));
        hn::StoreU(blend(c, hn::LoadU(d, x + i), hn::LoadU(d, y + i)), d, x + i);
    }
    for (; i < count; ++i) {
        const float c = std::clamp(start + static_cast<float>(i) * slope, 0.0f, 1.0f);
        x[i] = x[i] * c + (1.0f - c) * y[i];
    }
}

void Mix(const float* envelope, const float* x, float gain, uint32_t count, float* out) {
    const FloatTag d;
    const uint32_t lanes = static_cast<uint32_t>(hn::Lanes(d));
    const Floats level = hn::Set(d, gain);
    uint32_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const Floats shaped = hn::Mul(level, hn::LoadU(d, envelope + i));
        hn::StoreU(hn::Add(hn::LoadU(d, out + i), hn::Mul(shaped, hn::LoadU(d, x + i))), d,
                   out + i);
    }
    for (; i < count; ++i)
        out[i] += gain * envelope[i] * x[i];
}

const GrainKernels& Table() {
    static const GrainKernels table{&FillEnvelope, &Interpolate, &Pick,
                                    &Crossfade,    &Mix,         hwy::TargetName(HWY_TARGET)};
    return table;
}

}  // namespace HWY_NAMESPACE
}  // namespace Quorvan::dsp
HWY_AFTER_NAMESPACE();

#endif
