#pragma once

#include "effects/OctaverDelay.h"
#include "primitives/SmootherInterpLPF.h"
#include "primitives/SmootherLPF.h"
#include "primitives/SmootherSRL.h"
#include "support/PlainParts.h"
#include "support/SideBySide.h"

namespace Quorvan::test {

/// Plain model of one pitch-shifting stage, sample by sample, on lines without an end.
class PlainPitchShift {
public:
    using O = dsp::OctaverDelay;
    /// What the two stages of the effect don't share.
    struct Part {
        float feedback = 0.0f, pitch = -24.0f, detune = -100.0f;
    };

    PlainPitchShift(PlainKnobs<O>& shared, float sampleRate, uint32_t blockFrames, uint32_t seed)
        : knobs(shared), rate(sampleRate), frames(blockFrames), random(seed) {
        for (Voice& c : channels)
            SetUp({&c.pitch, &c.span, &c.slowSpan, &c.overlap}, rate, 1);
        mix.rampSteps = frames;
        SetUp({&mix}, rate, 1);
        high.range = 9980.0;
        low.range = 19750.0;
        SetUp({&high, &low}, rate, frames);
    }

    void Reset() {
        for (Voice& c : channels) {
            c.recent = c.main = PlainLine();
            c.sprayA = c.sprayB = 0.0f;
            c.phase = 0.49990001f;
            c.last = 0.00019997358f;
        }
        due = true;
    }

    /// One block. In mono the right output is silent.
    Stereo Run(const Part& own, const Stereo& in) {
        if (std::exchange(due, false))
            Snap(own);  // at the switches of the block before
        feedback = own.feedback;
        isStereo = knobs.IsOn(O::Stereo);
        isSynced = knobs.IsOn(O::MidiSync);
        type = static_cast<int>(knobs.Get(O::RateSyncedType));
        const float d = own.detune * 0.005f;
        channels[0].pitch.SetTarget(own.pitch - d);
        channels[1].pitch.SetTarget(own.pitch + d);
        mix.SetTarget(std::min(std::abs(d * 100.0f), 1.0f));
        const float wanted = std::clamp(Time(), 0.001f * rate, 4.02f * rate);
        const bool delayMoves = Fill(delay, wanted, std::max(double{wanted} * 1e-12, 1e-15));
        const bool offsetMoves =
            Fill(offset, rate * 0.001f * 0.5f * knobs.Get(O::DelayOffset, 9), 1e-20);
        high.SetTarget(knobs.Get(O::HPFreq, 5));
        low.SetTarget(knobs.Get(O::LPFreq, 6));
        const float highHz = high.Tick(), lowHz = low.Tick();
        for (Voice& c : channels) {
            c.highPass.FlatHighPass(highHz, rate);
            c.lowPass.FlatLowPass(lowHz, rate);
        }
        tempo = 120.0f;
        const bool interpolate = knobs.rows[3] || knobs.rows[9] || delayMoves || offsetMoves;
        Stereo out{Channel(in[0].size()), Channel(in[0].size())};
        for (size_t n = 0; n < in[0].size(); ++n)
            Sample(n, interpolate, in, out);
        return out;
    }

private:
    struct Glide {
        double current = 0.0, target = 0.0;
        std::vector<float> values;
    };
    struct Voice {
        PlainLine recent, main;
        dsp::SmootherLPF pitch{0.5}, span{0.01}, slowSpan{1.0}, overlap{0.01};
        PlainBiquad highPass, lowPass;
        float tapRate = 0.0f, phase = 0.0f, last = 0.0f, sprayA = 0.0f, sprayB = 0.0f;
        // Of this sample.
        float p = 0.0f, sawA = 0.0f, sawB = 0.0f;
        float delayA = 0.0f, delayB = 0.0f, gainA = 0.0f, gainB = 0.0f;

        float Read(const Voice& taps) const {
            return recent.Linear(taps.delayA) * taps.gainA +
                   recent.Linear(taps.delayB) * taps.gainB;
        }
    };

    static float Fraction(float x) { return x - std::trunc(x); }
    static float Unit(float saw) { return std::clamp((saw + 1.0f) / 2.0f, 0.0f, 1.0f); }

    template <class Give>
    void Apply(Voice& c, float pitch, Give give) {
        const float m = std::abs(pitch);
        float w = 0.029985627f;
        if (m > 2.63155f)
            w = (0.02872614f - 0.008806685f * m) / (std::pow(0.34744045f * m, 8.770802f) + 1.0f) +
                0.0100279f * m - 0.0002163307f;
        c.tapRate = (std::pow(2.0f, pitch * 0.083333336f) - 1.0f) / w;
        const float o = 0.498f * std::abs(c.tapRate);
        give(c.overlap, std::clamp(o / (o + 1.0f), 0.0f, 0.5f));
        give(c.span, w * rate);
        give(c.slowSpan, w * rate);
    }

    float Gain(float position, float overlap) const {
        const float e = overlap == 0.0f ? 1e-8f : overlap;
        if (position >= e && 1.0f - position >= e)
            return 1.0f;
        const float t = position < e ? position : 1.0f - position;
        const auto window = static_cast<int>(knobs.Get(O::Window));
        if (window == 0)
            return 0.5f + 0.5f * PlainSine(Fraction(t * 0.5f / e + 0.75f) * 6.2831855f);
        return window == 1 ? PlainSine(Fraction(t * 0.25f / e) * 6.2831855f) : t / e;
    }

    float Time() {
        if (!isSynced)
            return knobs.Get(O::DelayTimeMs, 3) * (rate * 0.001f);
        const float note = PlainNote(static_cast<int>(knobs.Get(O::DelayTimeSynced, 3)), tempo);
        return std::clamp(note, 0.0001f, 4.0f) * PlainKind(type) * rate;
    }

    /// Fills values; answers whether the glide is still under way behind them.
    bool Fill(Glide& glide, float wanted, double threshold) {
        glide.target = static_cast<double>(wanted);
        const double coefficient = 1.0 - std::exp(-5.0 / (0.5 * static_cast<double>(rate)));
        glide.values.clear();
        for (uint32_t i = 0; i < frames; ++i) {
            const double step = (glide.target - glide.current) * coefficient;
            glide.current = std::abs(step) >= threshold ? glide.current + step : glide.target;
            glide.values.push_back(static_cast<float>(glide.current));
        }
        return glide.current != glide.target;
    }

    void Snap(const Part& own) {
        delay.current = static_cast<double>(Time());
        offset.current = offset.target;
        high.Reset(knobs.Get(O::HPFreq, 5));
        low.Reset(knobs.Get(O::LPFreq, 6));
        const float d = own.detune * 0.005f;
        mix.Reset(std::min(std::abs(d * 100.0f), 1.0f));
        for (Voice& c : channels) {
            c.highPass.Clear();
            c.lowPass.Clear();
            const float pitch = &c == &channels[0] ? own.pitch - d : own.pitch + d;
            c.pitch.Reset(pitch);
            Apply(c, pitch, [](dsp::Smoother& smoother, float v) { smoother.Reset(v); });
        }
    }

    void Sample(size_t n, bool interpolate, const Stereo& in, Stereo& out) {
        const size_t count = isStereo ? 2 : 1;
        std::array<float, 2> delayed{}, shifted{};
        bool moves = interpolate;
        for (size_t c = 0; c < count; ++c)
            moves = Sweep(channels[c]) || moves;
        for (size_t c = 0; c < count; ++c) {
            const auto half = 0.5f * static_cast<float>(channels[c].slowSpan.current);
            const float side = c == 0 ? -offset.values[n] : offset.values[n];
            const float back =
                std::clamp(delay.values[n] - half + side, 0.001f * rate, 4.02f * rate);
            delayed[c] = moves ? channels[c].main.Polynomial(back)
                               : channels[c].main.At(static_cast<int32_t>(back));
        }
        const float r1 = static_cast<float>(PlainDraw(random)) * 2.3283064e-10f;
        const float r2 = static_cast<float>(PlainDraw(random)) * 2.3283064e-10f;
        const float own = mix.Tick();
        for (size_t c = 0; c < count; ++c)
            Place(channels[c], r1, r2);
        shifted[0] = channels[0].Read(channels[0]);
        if (count == 2)
            shifted[1] =
                channels[1].Read(channels[1]) * own + channels[1].Read(channels[0]) * (1 - own);
        for (size_t c = 0; c < count; ++c) {
            channels[c].recent.Write(delayed[c]);
            const float z = channels[c].lowPass.Run(channels[c].highPass.Run(shifted[c]));
            channels[c].main.Write(z * feedback + in[c][n]);
            out[c][n] = z;
        }
    }

    bool Sweep(Voice& c) {
        c.p = c.pitch.Tick();
        Apply(c, c.p, [](dsp::Smoother& smoother, float v) { smoother.SetTarget(v); });
        c.span.Tick();
        c.slowSpan.Tick();
        c.phase = Fraction(c.tapRate / rate + c.phase);
        c.sawA = 1.0f - 2.0f * Fraction(c.phase + 1.0f);
        c.sawB = 1.0f - 2.0f * Fraction(c.phase + 1.5f);
        return !c.slowSpan.IsAtRest();
    }

    void Place(Voice& c, float r1, float r2) {
        const float x = c.overlap.Tick(), u = Unit(c.sawA), shift = std::abs(c.p);
        const auto spray = [&](float r) {
            return r * (rate * 0.001f * knobs.Get(O::Spray, 8)) * shift / (shift + 0.01f);
        };
        if (c.p >= 0.0f ? c.last < u : c.last > u)
            c.sprayA = spray(r1);
        if (c.p >= 0.0f ? u <= 0.5f && c.last > 0.5f : u >= 0.5f && c.last < 0.5f)
            c.sprayB = spray(r2);
        c.last = u;
        const auto span = static_cast<float>(c.span.current);
        c.delayA = span * u + c.sprayA + 1.0f;
        c.delayB = span * Unit(c.sawB) + c.sprayB + 1.0f;
        c.gainA = Gain(std::clamp((1.0f - x) * c.sawA + x, 0.0f, 1.0f), x);
        c.gainB = Gain(std::clamp((1.0f - x) * c.sawB + x, 0.0f, 1.0f), x);
    }

    PlainKnobs<O>& knobs;
    float rate;
    uint32_t frames;
    uint32_t random;
    bool due = true, isStereo = true, isSynced = true;
    int type = 0;
    float feedback = 0.0f;
    float tempo = 100.0f;
    Glide delay, offset;
    std::array<Voice, 2> channels;
    dsp::SmootherInterpLPF mix{0.1};
    dsp::SmootherSRL high{0.004}, low{0.004};
};

}  // namespace Quorvan::test
