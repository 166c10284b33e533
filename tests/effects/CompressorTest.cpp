#include "effects/Compressor.h"

#include "primitives/SmootherInterpLPF.h"
#include "primitives/SmootherLPF.h"
#include "support/PlainParts.h"
#include "support/SideBySide.h"

namespace Quorvan::dsp {
namespace {

using C = Compressor;

using Rig = EffectRig<C>;

/// The same compressor sample by sample, with nothing worked out ahead and unending delay lines in
/// place of rings. In single precision like the real one: a release of seconds moves the gain by
/// less than the last digit, and where the two should part is not the point here. What glides comes
/// from the smoothers themselves.
class Plain {
public:
    Plain(C& source, float sampleRate, uint32_t block) : knobs(source), rate(sampleRate) {
        SetUp({&inGain, &outGain, &ratio, &threshold}, rate, block);
        SetUp({&wet}, rate, 1);
        wet.rampSteps = block;
        Reset(true);
    }

    void Reset(bool) {
        voices = {};
        inGain.Reset(InTarget());
        outGain.Reset(OutTarget());
        ratio.Reset(Get(C::Ratio));
        threshold.Reset(Get(C::Threshold));
        wet.Reset(Get(C::Wet));
    }

    Stereo Run(const Stereo& in, bool hasRight) {
        BeginBlock();
        const size_t count = in[0].size();
        const bool linked = On(C::StereoMode), mono = !hasRight;
        Stereo out{Channel(count, kStale), Channel(count, kStale)};
        for (size_t i = 0; i < count; ++i) {
            const float share = wet.Tick();
            const float x[2] = {in[0][i], mono ? 0.0f : in[1][i]};
            float gain = 0.0f;
            for (size_t c = 0; c < 2; ++c) {
                const float detected =
                    linked ? std::max(std::abs(x[0]), std::abs(x[1])) : std::abs(x[c]);
                if (c == 0 || !(linked || mono))
                    gain = Gain(voices[c], detected * inNow);
                if (c == 1 && mono && !linked)
                    continue;
                const float wetSignal = Delay(voices[c].audio, x[c] * inNow);
                if (c == 1 && mono)
                    continue;
                out[c][i] = (1.0f - share) * x[c] + share * wetSignal * gain * outNow * makeup;
            }
        }
        const bool onlyLeft = linked || mono;
        const float deepest = std::max(-voices[0].reduction, onlyLeft ? 0 : -voices[1].reduction);
        meter = ((deepest * 3.465e-06f - 0.000511f) * deepest + 0.03486f) * deepest;
        return out;
    }

    PlainKnobs<C> knobs;
    float meter = 0.0f;

private:
    struct Line {
        std::vector<float> past = std::vector<float>(4000);
        float& Back(int32_t k) { return past[past.size() - static_cast<size_t>(k)]; }
    };
    struct Voice {
        float level = 0.0f, reduction = 0.0f;
        Line audio, gains;
    };

    float InTarget() { return Linear(knobs.Get(C::InputGain) + knobs.Get(C::InGainCompensated)); }
    float OutTarget() { return Linear(knobs.Get(C::OutputGain) - knobs.Get(C::InGainCompensated)); }
    static float Linear(float db) { return std::pow(10.0f, db * 0.05f); }
    float Step(float ms) const { return 1.0f - std::exp(-1.0f / (ms * 0.001f * rate)); }
    float Get(uint32_t id) { return knobs.Get(id); }
    bool On(uint32_t id) { return knobs.IsOn(id); }
    bool Changed(uint32_t id) {
        const float value = Get(id);
        return value != std::exchange(seen[id], value);
    }

    void BeginBlock() {
        if (Changed(C::LookaheadEnable) && On(C::LookaheadEnable))
            for (Voice& voice : voices)
                voice.audio = voice.gains = Line();
        lookahead = On(C::LookaheadEnable)
                        ? static_cast<int32_t>(Get(C::LookaheadTimeMs) * rate * 0.001f)
                        : 0;
        if (Changed(C::InputGain))
            inGain.SetTarget(InTarget());
        if (Changed(C::OutputGain))
            outGain.SetTarget(OutTarget());
        inNow = inGain.Tick();
        outNow = outGain.Tick();
        wet.SetTarget(knobs.Get(C::Wet, 2));
        release = Step(knobs.Get(C::Release, 3));
        threshold.SetTarget(knobs.Get(C::Threshold, 4));
        ratio.SetTarget(knobs.Get(C::Ratio, 5));
        const auto ratioNow = ratio.Tick();
        fall = On(C::RatioInfinite) ? -1.0f : 1.0f / ratioNow - 1.0f;
        thresholdNow = threshold.Tick();
        // The static curve reads a makeup at 0 dB just as any other level.
        makeup = On(C::Makeup) ? std::pow(10.0f, -StaticGain(0.0f) * 0.0353555f) : 1.0f;
    }
    float StaticGain(float db) {
        const float knee = Get(C::KneeWidth);
        const float above = db - thresholdNow;
        if (above <= -0.5f * knee)
            return 0.0f;
        if (above >= 0.5f * knee)
            return above * fall;
        return fall * (above + 0.5f * knee) * (above + 0.5f * knee) / (2.0f * knee);
    }
    float Gain(Voice& v, float detected) {
        if (!On(C::LevelMeasureSmoothAR))
            v.level = detected;
        else
            v.level += (detected - v.level) *
                       Step(Get(detected > v.level ? C::LevelMeasureAtMs : C::LevelMeasureReMs));
        const float wanted =
            StaticGain(v.level < 1.0e-7f ? -140.0f : 8.685889f * std::log(v.level));
        const bool attacks = std::abs(wanted) > std::abs(v.reduction);
        v.reduction += (wanted - v.reduction) * (attacks ? Step(Get(C::Attack)) : release);
        const float now = Linear(v.reduction);
        if (lookahead == 0)
            return now;
        Line& line = v.gains;
        line.past.push_back(now);
        const float leaving = line.Back(lookahead + 1);
        if (now < line.Back(2) && lookahead > 2)
            for (int32_t k = 2; k < lookahead; ++k) {
                const float done = static_cast<float>(k - 1) / static_cast<float>(lookahead);
                const float ramp = (1.0f - done) * (now - leaving) + leaving;
                if (ramp >= line.Back(k))
                    break;
                line.Back(k) = ramp;
            }
        return leaving;
    }
    float Delay(Line& line, float x) const {
        if (lookahead == 0)
            return x;
        line.past.push_back(x);
        return line.Back(lookahead + 1);
    }

    float rate;
    std::array<float, 18> seen{};
    SmootherLPF inGain{0.05}, outGain{0.05}, ratio{0.05}, threshold{0.05};
    SmootherInterpLPF wet{0.01};
    std::array<Voice, 2> voices;
    float inNow = 0.0f, outNow = 0.0f, release = 0.0f, fall = 0.0f, thresholdNow = 0.0f,
          makeup = 1.0f;
    int32_t lookahead = 0;
};

void Jump(Rig& rig, Dice& dice, float share) {
    struct Range {
        uint32_t id;
        float from, to;
    };
    const Range ranges[] = {{C::Wet, 0.0f, 1.0f},
                            {C::InGainCompensated, -12.0f, 12.0f},
                            {C::InputGain, -18.0f, 18.0f},
                            {C::OutputGain, -18.0f, 6.0f},
                            {C::Attack, 0.01f, 20.0f},
                            {C::Release, 1.0f, 100.0f},
                            {C::Threshold, -60.0f, 0.0f},
                            {C::Ratio, 1.0f, 20.0f},
                            {C::KneeWidth, dice.Chance(0.4f) ? 0.0f : 1.0f, 20.0f},
                            {C::LevelMeasureAtMs, 0.01f, 10.0f},
                            {C::LevelMeasureReMs, 0.01f, 50.0f},
                            {C::LookaheadTimeMs, 0.01f, dice.Chance(0.5f) ? 10.0f : 0.2f}};
    for (const Range& range : ranges)
        if (dice.Chance(share))
            rig.Set(range.id, dice.Between(range.from, range.to));
    for (const uint32_t id :
         {C::RatioInfinite, C::Makeup, C::StereoMode, C::LevelMeasureSmoothAR, C::LookaheadEnable})
        if (dice.Chance(share))
            rig.Set(id, dice.Chance(0.5f) ? 0.0f : 1.0f);
    if (dice.Chance(0.25f))
        rig.Set(C::KneeWidth, 0.0f);
}

// In the look-ahead a ramp ends where it meets the curve: where the two run side by side, the last
// digit decides on a stretch of it, which then is off a little more.
TEST(CompressorTest, MatchesAPlainModelWhileEverythingMoves) {
    ExpectAlike<Rig, Plain>(4000, 2.0e-4f, [](auto& pair, uint32_t number) {
        pair.unit = 0.2f;
        ASSERT_NEAR(pair.rig.module.Value(C::OutGainReduction), std::min(pair.model.meter, 1.0f),
                    1.0e-6f)
            << number;
        if (number % 20 == 0)
            Jump(pair.rig, pair.dice, number % 240 == 0 ? 1.0f : 0.2f);
        for (uint32_t row = 2; row < 6 && number > 2000; ++row)
            if (pair.dice.Chance(0.01f))
                pair.Modulate(row, pair.dice.Between(-0.3f, 0.3f));
        if (number % 240 == 0 && number > 0)
            pair.Reset(number % 480 == 0);
    });
}

}  // namespace
}  // namespace Quorvan::dsp
