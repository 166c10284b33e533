#pragma once

#include "effects/Reverb.h"
#include "support/PlainParts.h"
#include "support/SideBySide.h"

namespace Quorvan::test {

/// Plain model of the plate, frame by frame, on lines without an end.
class PlainPlate {
public:
    using Core = dsp::DattorroCore;
    /// Physical values by id.
    using Values = std::array<float, Core::kParameterCount>;

    PlainPlate(float sampleRate, uint32_t blockFrames) : rate(sampleRate), frames(blockFrames) {
        SetUp({&predelay, &decay, &size}, rate, 1);
    }

    void Reset(const Values& own, bool hard) {
        last.fill(hard ? -1.0f : 0.0f);
        if (!hard)
            last = own;
        predelayed = PlainLine();
        allpasses.fill(PlainLine());
        lines.fill(PlainLine());
        damped.fill(0.0f);
        predelay.Reset(rate * own[Core::Predelay]);
        decay.Reset(own[Core::Decay]);
        size.Reset(own[Core::Size]);
        nowSize = size.Tick();
        phases = {0.0f, 1.0f};
        modulation[0].assign(frames, 0.0f);
        modulation[1].assign(frames, 0.0f);
    }

    /// own: as the parameters stand; heard: with their modulation. sizeRow: on the last channel.
    Stereo Run(const Values& own, const Values& heard, float sizeRow, const Channel& in) {
        const size_t count = in.size();
        now = heard;
        frozen = own[Core::Freeze] > 0.5f;
        if (own[Core::Predelay] != last[Core::Predelay])
            predelay.SetTarget(rate * own[Core::Predelay]);
        for (uint32_t n = 0; n < frames; ++n)
            predelay.Tick();
        if (own[Core::SmoothTimeDelay] != last[Core::SmoothTimeDelay])
            for (dsp::SmootherLPF* smoother : {&predelay, &size}) {
                smoother->time = std::max(double{own[Core::SmoothTimeDelay]}, 1e-12);
                smoother->UpdateCoefficients();
            }
        last = own;
        Modulate(count);
        const float d = heard[Core::Damping];
        damp = frozen ? 0.0f : 1.0f - (1.0f - d) / (d * Ratio() + 1.0f - d);
        decay.SetTarget(frozen ? 1.0f : heard[Core::Decay]);
        std::vector<float> gains, delays;
        predelay.SetTarget(heard[Core::Predelay] * rate);
        for (uint32_t n = 0; n < frames; ++n) {
            gains.push_back(decay.Tick());
            delays.push_back(predelay.Tick());
        }
        size.SetTarget(std::clamp(heard[Core::Size] + 0.1f * sizeRow, 0.1f, 1.9f));
        const bool whole = predelay.IsAtRest() && delays.front() == delays.back();
        Stereo out{Channel(count), Channel(count)};
        for (size_t n = 0; n < count; ++n) {
            const float x = frozen ? 0.0f : in[n];
            const auto t = static_cast<int32_t>(delays[n]);
            const float f = whole ? 0.0f : delays[n] - static_cast<float>(t);
            const float y = t < 1 ? x : Read(predelayed, t, f);
            predelayed.Write(x);
            Frame(y, gains[n], n, out);
        }
        return out;
    }

private:
    struct Length {
        int32_t whole;
        float fraction;
    };

    static float Read(const PlainLine& line, int32_t delay, float fraction) {
        return (line.At(delay + 1) - line.At(delay)) * fraction + line.At(delay);
    }
    float Ratio() const { return rate * 3.360102e-05f; }

    void Modulate(size_t count) {
        const float step = now[Core::OscillatorRate] * 6.2831855f / rate;
        const std::array<float, 2> steps = {step, (1.0f - now[Core::OscillatorSpread]) * step};
        for (uint32_t c = 0; c < 2; ++c) {
            const float held = std::round(modulation[c][count - 1]);
            for (size_t n = 0; n < count; ++n) {
                if (!frozen)
                    phases[c] = std::fmod(phases[c] + steps[c], 6.2831855f);
                modulation[c][n] =
                    frozen ? held : std::sin(phases[c]) * (rate * now[Core::Excursion] * 0.001f);
            }
        }
    }

    Length LengthOf(float base, float least = 0.0f) const {
        const float v = std::max(base * (nowSize * Ratio()), least);
        const auto whole = static_cast<int32_t>(v);
        return {whole, gliding ? v - static_cast<float>(whole) : 0.0f};
    }
    float Allpass(uint32_t i, float base, float gain, float x, float shift = 0.0f) {
        const Length length = LengthOf(base, 1.0f);
        const float m = shift + length.fraction;
        const auto t = static_cast<int32_t>(std::floor(m)) + length.whole;
        const float y = t < 1 ? allpasses[i].At(1) : Read(allpasses[i], t, m - std::floor(m));
        const float v = x - y * gain;
        allpasses[i].Write(v);
        return v * gain + y;
    }
    float Tap(const PlainLine& line, float base, int32_t nearer = 0) const {
        const Length length = LengthOf(base);
        return Read(line, length.whole - nearer, length.fraction);
    }

    void Frame(float x, float gain, size_t n, Stereo& out) {
        gliding = !size.IsAtRest();
        if (gliding)
            nowSize = size.Tick();
        float s = Allpass(0, 142, now[Core::InputDiffusion1], x);
        s = Allpass(1, 407, now[Core::InputDiffusion1], s);
        s = Allpass(2, 379, now[Core::InputDiffusion2], s);
        s = Allpass(3, 277, now[Core::InputDiffusion2], s);

        const float first = Tap(lines[3], 3720, 1) * gain + s;
        const float u = Allpass(4, 908, -now[Core::DecayDiffusion1], first, modulation[0][n]);
        damped[0] = (1.0f - damp) * Tap(lines[0], 4217) + damp * damped[0];
        lines[0].Write(u);
        lines[1].Write(Allpass(5, 2656, now[Core::DecayDiffusion2], damped[0]));

        const float second = Tap(lines[1], 3163, 1) * gain + s;
        const float w = Allpass(6, 672, -now[Core::DecayDiffusion1], second, modulation[1][n]);
        damped[1] = (1.0f - damp) * Tap(lines[2], 4453) + damp * damped[1];
        lines[2].Write(w);
        lines[3].Write(Allpass(7, 1800, now[Core::DecayDiffusion2], damped[1]));

        out[0][n] = Tap(lines[0], 266) + Tap(lines[0], 2974) - Tap(allpasses[5], 1913) +
                    Tap(lines[1], 1996) - Tap(lines[2], 1990) - Tap(allpasses[7], 187) -
                    Tap(lines[3], 1066);
        out[1][n] = Tap(lines[2], 353) + Tap(lines[2], 3627) - Tap(allpasses[7], 1228) +
                    Tap(lines[3], 2673) - Tap(lines[0], 2111) - Tap(allpasses[5], 335) -
                    Tap(lines[1], 121);
    }

    float rate;
    uint32_t frames;
    Values now{}, last{};
    bool frozen = false, gliding = false;
    float damp = 0.0f, nowSize = 1.0f;
    std::array<float, 2> phases{}, damped{};
    Stereo modulation;
    PlainLine predelayed;
    std::array<PlainLine, 8> allpasses;
    std::array<PlainLine, 4> lines;
    dsp::SmootherLPF predelay{0.5}, decay{0.05}, size{0.5};
};

class PlainReverb {
public:
    using R = dsp::Reverb;
    using Core = dsp::DattorroCore;
    using Values = std::array<float, R::kParameterCount>;

    PlainReverb(R& reverb, float sampleRate, uint32_t blockFrames)
        : knobs(reverb), rate(sampleRate), frames(blockFrames), plate(sampleRate, blockFrames) {
        wet.rampSteps = frames;
        SetUp({&wet, &earlySize}, rate, 1);
        SetUp({&earlyMix, &level, &sides}, rate, frames);
        Reset(true);
    }

    void Reset(bool hard) {
        const Values own = Own();
        plate.Reset(Plate(own), hard);
        last.fill(-1000.0f);
        if (!hard)
            last = own;
        for (Side& side : input) {
            side.high = 0.0f;
            side.early = PlainLine();
        }
        wet.Reset(own[R::Wet]);
        level.Reset(own[R::OutputGain]);
        earlyMix.Reset(own[R::EarlyMix]);
        earlySize.Reset(own[R::EarlySize] * 0.01f);
        sides.Reset(own[R::MSMix]);
        sideGain = sides.Tick();
        spread = earlySize.Tick();
        gain = std::pow(10.0f, own[R::OutputGain] * 0.05f);
    }

    Stereo Run(const Stereo& in, bool) {
        const Values own = Own();
        Values heard = own;
        uint32_t channel = 2;
        for (const uint32_t id : {R::Wet, R::LPBandWith, R::HPBandWith})
            heard[id] = knobs.Get(id, channel++);
        for (const uint32_t id : {Core::Decay, Core::Size, Core::Predelay, Core::Damping})
            heard[id] = knobs.Get(id, channel++);
        Update(own);
        wet.SetTarget(heard[R::Wet]);
        const size_t count = in[0].size();
        Channel feed;
        Stereo early, out = in;
        for (size_t n = 0; n < count; ++n) {
            const float l = Filter(input[0], heard, in[0][n]),
                        r = Filter(input[1], heard, in[1][n]);
            feed.push_back((l + r) * 0.5f);
            if (!earlyOn)
                continue;
            early[0].push_back(Early(input[0], {0, 592, 652, 1054, 1158, 1232, 2059, 2649}));
            early[1].push_back(Early(input[1], {0, 295, 327, 542, 562, 634, 1283, 2053}));
            input[0].early.Write(0.5f * l + 0.3f * r);
            input[1].early.Write(0.3f * l + 0.5f * r);
        }
        for (size_t n = 0; earlyOn && n < count && !earlySize.IsAtRest(); ++n)
            spread = earlySize.Tick();
        for (Channel& side : early)
            side.resize(count, 0.0f);
        const Stereo tail = plate.Run(Plate(own), Plate(heard), knobs.rows[9].value_or(0.0f), feed);
        for (size_t n = 0; n < count; ++n) {
            const float angle = wet.Tick() * 1.5707964f;
            const float l = (1.0f - mix) * tail[0][n] + mix * early[0][n];
            const float r = (1.0f - mix) * tail[1][n] + mix * early[1][n];
            const float mid = (l + r) * (1.0f - sideGain), side = (l - r) * sideGain;
            const float a = 0.26801017f * std::sin(angle), b = std::cos(angle);
            out[0][n] = ((side + mid) * a + b * in[0][n]) * gain;
            out[1][n] = ((mid - side) * a + b * in[1][n]) * gain;
        }
        return out;
    }

    PlainKnobs<R> knobs;

private:
    struct Side {
        float low = 0.0f, high = 0.0f;
        PlainLine early;
    };

    Values Own() {
        Values values;
        for (uint32_t id = 0; id < values.size(); ++id)
            values[id] = knobs.Get(id);
        return values;
    }
    static PlainPlate::Values Plate(const Values& all) {
        PlainPlate::Values values;
        std::copy_n(all.begin(), values.size(), values.begin());
        return values;
    }

    void Update(const Values& own) {
        const auto changed = [&](uint32_t id) { return own[id] != last[id]; };
        sides.SetTarget(own[R::MSMix]);
        if (!sides.IsAtRest())
            sideGain = sides.Tick();
        level.SetTarget(own[R::OutputGain]);
        const bool switched = changed(R::EarlyOn);
        earlyOn = own[R::EarlyOn] >= 0.5f;
        if (earlyOn || switched) {
            if (switched || changed(R::EarlyMix))
                earlyMix.SetTarget(own[R::EarlyMix]);
            if (switched || changed(R::EarlySize))
                earlySize.SetTarget(own[R::EarlySize] * 0.01f);
            if (switched || changed(R::InvertEarly))
                inverted = own[R::InvertEarly] > 0.5f;
            mix = earlyMix.Tick();
        }
        if (!earlyOn)
            mix = 0.0f;
        if (changed(R::SmoothTimeDelayCont)) {
            earlySize.time = std::max(double{own[R::SmoothTimeDelayCont]}, 1e-12);
            earlySize.UpdateCoefficients();
        }
        if (!level.IsAtRest())
            gain = std::pow(10.0f, level.Tick() * 0.05f);
        last = own;
    }

    float Filter(Side& side, const Values& heard, float x) const {
        const float kLow = 1.0f / std::tan(3.1415927f * heard[R::LPBandWith] / rate);
        const float low = x / (1.0f + kLow) + side.low;
        side.low = x / (1.0f + kLow) - (1.0f - kLow) / (1.0f + kLow) * low;
        const float kHigh = 0.31830987f * rate / heard[R::HPBandWith];
        const float high = low * kHigh / (1.0f + kHigh) + side.high;
        side.high = -low * kHigh / (1.0f + kHigh) - (1.0f - kHigh) / (1.0f + kHigh) * high;
        return high;
    }

    float Early(const Side& side, const std::array<float, 8>& places) const {
        const float gains[] = {1.0f, 0.6f, 0.5f, 0.4f, 0.3f, 0.3f, 0.1f, 0.1f};
        float sum = 0.0f;
        for (uint32_t i = 0; i < 8; ++i) {
            const auto place = static_cast<int32_t>(places[i] * (spread * (rate * 3.360102e-05f)));
            sum += side.early.At(std::max(place, 1)) * gains[inverted ? 7 - i : i];
        }
        return sum;
    }

    float rate;
    uint32_t frames;
    PlainPlate plate;
    Values last{};
    std::array<Side, 2> input;
    bool earlyOn = false, inverted = false;
    float mix = 0.0f, spread = 1.0f, sideGain = 0.0f, gain = 1.0f;
    dsp::SmootherInterpLPF wet{0.002};
    dsp::SmootherLPF earlyMix{0.002}, level{0.002}, earlySize{0.5}, sides{0.05};
};

}  // namespace Quorvan::test
