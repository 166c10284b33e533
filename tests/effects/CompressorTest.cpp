#include "effects/Compressor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "primitives/SmootherInterpLPF.h"
#include "primitives/SmootherLPF.h"
#include "support/ModuleRig.h"
#include "support/TestSignals.h"

namespace Quorvan::dsp {
namespace {

using test::Channel;
using test::Stereo;
using C = Compressor;

constexpr float kRate = 48000.0f;
constexpr uint32_t kBlock = 48;

struct Rig : test::ModuleRig<C> {
    /// Wet, all gains 0 dB, no knee, and at rest.
    explicit Rig(float thresholdDb = -20.0f, float ratio = 4.0f, float rate = kRate)
        : test::ModuleRig<C>(rate, kBlock, "Compressor") {
        Set(C::Wet, 1.0f);
        Set(C::OutputGain, 0.0f);
        Set(C::Threshold, thresholdDb);
        Set(C::Ratio, ratio);
        module.Reset(true);
    }
    void Set(uint32_t id, float value) { module.SetParameterValue(id, value); }
    void LookAhead(float ms) {
        Set(C::LookaheadEnable, 1.0f);
        Set(C::LookaheadTimeMs, ms);
        module.Reset(true);
    }
    /// Gain in dB that a constant input of this level ends up with.
    float StaticGainDb(float levelDb) {
        const float level = std::pow(10.0f, levelDb * 0.05f);
        const Channel held(24000, level);
        return test::DecibelsOf(Run({held, held})[0].back() / level);
    }
};

/// The same compressor sample by sample, with nothing worked out ahead and unending delay lines in
/// place of rings. In single precision like the real one: a release of seconds moves the gain by
/// less than the last digit, and where the two should part is not the point here. It takes its
/// settings from a module, and what glides from the smoothers themselves.
class Plain {
public:
    Plain(C& source, float sampleRate) : module(source), rate(sampleRate) {
        for (SmootherLPF* s : {&inGain, &outGain, &ratio, &threshold})
            Configure(*s, kBlock);
        Configure(wet, 1);
        wet.rampSteps = kBlock;
        inGain.Reset(InTarget());
        outGain.Reset(OutTarget());
        ratio.Reset(module.Value(C::Ratio));
        threshold.Reset(module.Value(C::Threshold));
        wet.Reset(module.Value(C::Wet));
    }
    void Modulate(uint32_t row, float amount) { rows[row] = amount; }

    Stereo Run(const Stereo& in, bool mono, float fill) {
        const size_t length = in[0].size();
        Stereo out{Channel(length, fill), Channel(length, fill)};
        for (size_t at = 0; at < length; at += kBlock)
            Block(in, mono, out, at, std::min<size_t>(at + kBlock, length));
        return out;
    }
    float Meter() const { return meter; }

private:
    struct Line {
        std::vector<float> past = std::vector<float>(4000);
        float& Back(int32_t k) { return past[past.size() - static_cast<size_t>(k)]; }
    };
    struct Voice {
        float level = 0.0f, reduction = 0.0f;
        Line audio, gains;
    };

    void Configure(SmootherLPF& s, uint32_t steps) const {
        s.sampleRate = static_cast<double>(rate);
        s.stepLength = steps;
        s.UpdateCoefficients();
    }
    float InTarget() {
        return Linear(module.Value(C::InputGain) + module.Value(C::InGainCompensated));
    }
    float OutTarget() {
        return Linear(module.Value(C::OutputGain) - module.Value(C::InGainCompensated));
    }
    static float Linear(float db) { return std::pow(10.0f, db * 0.05f); }
    float Step(float ms) const { return 1.0f - std::exp(-1.0f / (ms * 0.001f * rate)); }
    float Get(uint32_t id) { return module.Value(id); }
    float Read(uint32_t id, uint32_t row) {
        return rows[row] == 0.0f ? module.Value(id)
                                 : module.ParameterAt(id).GetModulatedValue(rows[row]);
    }
    bool On(uint32_t id) { return module.Position(id) > 0.5f; }
    bool Changed(uint32_t id) {
        const float value = module.Value(id);
        const bool changed = value != seen[id];
        seen[id] = value;
        return changed;
    }

    void Block(const Stereo& in, bool mono, Stereo& out, size_t from, size_t to) {
        if (Changed(C::LookaheadEnable) && On(C::LookaheadEnable))
            for (Voice& voice : voices)
                voice.audio = voice.gains = Line();
        lookahead = On(C::LookaheadEnable)
                        ? static_cast<int32_t>(module.Value(C::LookaheadTimeMs) * rate * 0.001f)
                        : 0;
        if (Changed(C::InputGain))
            inGain.SetTarget(InTarget());
        if (Changed(C::OutputGain))
            outGain.SetTarget(OutTarget());
        inNow = inGain.Tick();
        outNow = outGain.Tick();
        wet.SetTarget(Read(C::Wet, 2));
        release = Step(Read(C::Release, 3));
        threshold.SetTarget(Read(C::Threshold, 4));
        ratio.SetTarget(Read(C::Ratio, 5));
        const auto ratioNow = ratio.Tick();
        fall = On(C::RatioInfinite) ? -1.0f : 1.0f / ratioNow - 1.0f;
        thresholdNow = threshold.Tick();
        // The static curve reads a makeup at 0 dB just as any other level.
        const float makeup = On(C::Makeup) ? std::pow(10.0f, -StaticGain(0.0f) * 0.0353555f) : 1.0f;
        const bool linked = On(C::StereoMode);
        meter = 0.0f;
        for (size_t i = from; i < to; ++i) {
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
        for (size_t c = 0; c < (linked || mono ? 1u : 2u); ++c)
            meter = std::max(meter, -voices[c].reduction);
        meter = ((meter * 3.465e-06f - 0.000511f) * meter + 0.03486f) * meter;
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

    C& module;
    float rate;
    std::array<float, 6> rows{};
    std::array<float, 18> seen{};
    SmootherLPF inGain{0.05}, outGain{0.05}, ratio{0.05}, threshold{0.05};
    SmootherInterpLPF wet{0.01};
    std::array<Voice, 2> voices;
    float inNow = 0.0f, outNow = 0.0f, release = 0.0f, fall = 0.0f, thresholdNow = 0.0f,
          meter = 0.0f;
    int32_t lookahead = 0;
};

/// Draws a new value for some of the parameters.
template <class Random>
void Jump(Rig& rig, Random& random, uint32_t share) {
    const auto draw = [&random](float from, float to) {
        return std::uniform_real_distribution<float>(from, to)(random);
    };
    const auto jump = [&](uint32_t id, float from, float to) {
        if (random() % share == 0)
            rig.Set(id, draw(from, to));
    };
    const auto flip = [&](uint32_t id) {
        if (random() % share == 0)
            rig.Set(id, random() % 2 == 0 ? 0.0f : 1.0f);
    };
    jump(C::Wet, 0.0f, 1.0f);
    jump(C::InGainCompensated, -12.0f, 12.0f);
    jump(C::InputGain, -18.0f, 18.0f);
    jump(C::OutputGain, -18.0f, 6.0f);
    jump(C::Attack, 0.01f, 20.0f);
    jump(C::Release, 1.0f, 100.0f);
    jump(C::Threshold, -60.0f, 0.0f);
    jump(C::Ratio, 1.0f, 20.0f);
    jump(C::KneeWidth, random() % 3 == 0 ? 0.0f : 1.0f, 20.0f);
    jump(C::LevelMeasureAtMs, 0.01f, 10.0f);
    jump(C::LevelMeasureReMs, 0.01f, 50.0f);
    jump(C::LookaheadTimeMs, 0.01f, random() % 2 == 0 ? 10.0f : 0.2f);
    for (const uint32_t id :
         {C::RatioInfinite, C::Makeup, C::StereoMode, C::LevelMeasureSmoothAR, C::LookaheadEnable})
        flip(id);
    if (random() % 4 == 0)
        rig.Set(C::KneeWidth, 0.0f);
}

// In the look-ahead a ramp ends where it meets the curve: where the two run side by side, the last
// digit decides on a stretch of it, which then is off a little more.
TEST(CompressorTest, MatchesAPlainModelUnderJumpingSettings) {
    std::mt19937 random(5);
    uint32_t astray = 0;
    for (uint32_t round = 0; round < 40; ++round) {
        const float rate = round % 3 == 0 ? 44100.0f : 96000.0f;
        Rig rig(-20.0f, 4.0f, rate);
        Jump(rig, random, 1);
        rig.module.Reset(true);
        Plain plain(rig.module, rate);
        for (uint32_t row = 2; row < 6 && round % 5 == 0; ++row) {
            const float amount = test::Noise(round + row, 1, 0.3f)[0];
            rig.Modulate(row, amount);
            plain.Modulate(row, amount);
        }
        for (uint32_t part = 0; part < 12; ++part) {
            const bool mono = round % 4 == 1 && part % 5 != 0;
            const Stereo input{test::Bursts(100 * round + part, 960, 0.9f),
                               test::Bursts(100 * round + part + 50, 960, 0.9f)};
            const Stereo found = mono ? rig.RunMono(input[0], 7.0f) : rig.Run(input, 7.0f);
            const Stereo wanted = plain.Run(input, mono, 7.0f);
            for (size_t c = 0; c < 2; ++c)
                for (size_t i = 0; i < 960; ++i) {
                    const float scale = 0.2f + std::abs(wanted[c][i]);
                    const float error = std::abs(found[c][i] - wanted[c][i]) / scale;
                    astray += error <= 1.0e-6f ? 0u : 1u;
                    ASSERT_LE(error, 1.0e-3f)
                        << "round " << round << " part " << part << " channel " << c << " at " << i;
                }
            EXPECT_NEAR(rig.module.Value(C::OutGainReduction),
                        std::clamp(plain.Meter(), 0.0f, 1.0f), 1.0e-6f);
            Jump(rig, random, 5);
        }
    }
    EXPECT_LT(astray, 2000u);  // of 920000
}

TEST(CompressorTest, StaticCurveBendsAtTheThreshold) {
    for (const float levelDb : {-40.0f, -20.1f, -10.0f, 0.0f}) {
        const float above = std::max(levelDb + 20.0f, 0.0f);
        EXPECT_NEAR(Rig(-20.0f, 4.0f).StaticGainDb(levelDb), -0.75f * above, 0.001f);
        EXPECT_NEAR(Rig(-20.0f, 1.0f).StaticGainDb(levelDb), 0.0f, 1.0e-5f);
        Rig wall(-20.0f, 1.0f);
        wall.Set(C::RatioInfinite, 1.0f);
        EXPECT_NEAR(wall.StaticGainDb(levelDb), -above, 0.001f);
    }
}

TEST(CompressorTest, KneeJoinsBothLines) {
    const auto gainDb = [](float levelDb) {
        Rig rig(-20.0f, 4.0f);
        rig.Set(C::KneeWidth, 12.0f);
        return rig.StaticGainDb(levelDb);
    };
    EXPECT_NEAR(gainDb(-26.0f), 0.0f, 0.001f);
    EXPECT_NEAR(gainDb(-20.0f), -0.75f * 12.0f / 8.0f, 0.001f);
    EXPECT_NEAR(gainDb(-14.0f), -0.75f * 6.0f, 0.001f);
    EXPECT_NEAR(gainDb(-10.0f), -0.75f * 10.0f, 0.001f);
}

TEST(CompressorTest, MakeupIsTheReductionOfFullScaleOverRootTwo) {
    const auto makeupDb = [](float threshold, float ratio, float knee) {
        Rig rig(threshold, ratio);
        rig.Set(C::KneeWidth, knee);
        rig.Set(C::Makeup, 1.0f);
        return rig.StaticGainDb(-100.0f);
    };
    EXPECT_NEAR(makeupDb(-20.0f, 4.0f, 0.0f), 15.0f / std::sqrt(2.0f), 0.001f);
    EXPECT_NEAR(makeupDb(-2.0f, 4.0f, 16.0f), 0.75f * 100.0f / 32.0f / std::sqrt(2.0f), 0.001f);
    EXPECT_NEAR(makeupDb(0.0f, 4.0f, 0.0f), 0.0f, 1.0e-5f);
    EXPECT_NEAR(makeupDb(-40.0f, 1.0f, 10.0f), 0.0f, 1.0e-5f);
}

TEST(CompressorTest, AttackAndReleaseAreTimeConstantsOfTheDecibels) {
    Rig rig(-20.0f, 4.0f);
    rig.Set(C::Attack, 10.0f);
    rig.Set(C::Release, 20.0f);
    const Channel loud(4800, 1.0f);
    const Channel attack = rig.Run({loud, loud})[0];
    const float reached = -15.0f * (1.0f - std::exp(-1.0f));
    EXPECT_NEAR(test::DecibelsOf(attack[479]), reached, 0.01f);
    rig.Run({loud, loud});
    const Channel quiet(4800, 0.01f);
    const Channel release = rig.Run({quiet, quiet})[0];
    EXPECT_NEAR(test::DecibelsOf(release[959] / 0.01f), -15.0f * std::exp(-1.0f), 0.01f);
}

TEST(CompressorTest, WetPathIsDelayedAndDryPathIsTheInput) {
    const Stereo input{test::Bursts(1, 4800, 0.9f), test::Bursts(2, 4800, 0.9f)};
    Rig wet(0.0f, 1.0f);
    wet.LookAhead(2.5f);
    const Stereo delayed = wet.Run(input);
    EXPECT_EQ(wet.module.LookaheadSamples(), 120);
    for (size_t i = 0; i < 4800; ++i)
        ASSERT_EQ(delayed[1][i], i < 120 ? 0.0f : input[1][i - 120]);
    Rig dry(-40.0f, 20.0f);
    dry.Set(C::Wet, 0.0f);
    dry.Set(C::InputGain, 18.0f);
    dry.LookAhead(2.5f);
    EXPECT_EQ(dry.Run(input), input);
}

TEST(CompressorTest, EnablingTheLookAheadStartsWithSilence) {
    const Stereo input{Channel(960, 0.5f), Channel(960, 0.5f)};
    Rig rig;
    rig.LookAhead(5.0f);
    rig.Run(input);
    rig.Set(C::LookaheadEnable, 0.0f);
    EXPECT_GT(rig.Run(input)[0][0], 0.0f);
    rig.Set(C::LookaheadEnable, 1.0f);
    const Channel output = rig.Run(input)[0];
    for (size_t i = 0; i < 240; ++i)
        ASSERT_EQ(output[i], 0.0f);
    EXPECT_GT(output[240], 0.0f);
}

TEST(CompressorTest, LinkedChannelsShareTheGainOfTheLouder) {
    Rig rig(-30.0f, 10.0f);
    rig.Set(C::StereoMode, 1.0f);
    const Stereo input{test::Bursts(3, 4800, 1.0f), test::Noise(4, 4800, 0.001f)};
    const Stereo output = rig.Run(input);
    for (size_t i = 0; i < 4800; ++i)
        ASSERT_NEAR(output[0][i] * input[1][i], output[1][i] * input[0][i], 1.0e-8f);
    EXPECT_LT(std::abs(output[1][4799]), std::abs(input[1][4799]));
}

TEST(CompressorTest, AMissingRightInputLeavesItsOutputAlone) {
    for (const float linked : {0.0f, 1.0f}) {
        Rig rig;
        rig.Set(C::StereoMode, linked);
        rig.LookAhead(1.0f);
        const Channel input = test::Bursts(5, 960, 1.0f);
        const Stereo output = rig.RunMono(input, 3.0f);
        EXPECT_EQ(output[1], Channel(960, 3.0f));
        EXPECT_NE(output[0], Channel(960, 3.0f));
    }
}

TEST(CompressorTest, MeterIsHalfAtNineteenDecibels) {
    const auto meter = [](float reductionDb) {
        Rig rig(-80.0f, 1.0f);
        rig.Set(C::RatioInfinite, 1.0f);
        rig.StaticGainDb(reductionDb - 80.0f);
        return rig.module.Position(C::OutGainReduction);
    };
    EXPECT_EQ(meter(0.0f), 0.0f);
    EXPECT_NEAR(meter(19.0f), 0.5f, 0.005f);
    EXPECT_NEAR(meter(60.0f), 1.0f, 0.005f);
    EXPECT_EQ(meter(90.0f), 1.0f);
}

TEST(CompressorTest, RunsInPlace) {
    const auto run = [](bool inPlace, float linked) {
        Rig rig(-30.0f, 8.0f);
        rig.Set(C::Wet, 0.7f);
        rig.Set(C::StereoMode, linked);
        rig.LookAhead(1.7f);
        Stereo signal{test::Bursts(6, 9600, 1.0f), test::Bursts(7, 9600, 1.0f)};
        if (inPlace)
            rig.RunInPlace(signal);
        else
            signal = rig.Run(signal);
        return signal;
    };
    EXPECT_EQ(run(true, 0.0f), run(false, 0.0f));
    EXPECT_EQ(run(true, 1.0f), run(false, 1.0f));
}

}  // namespace
}  // namespace Quorvan::dsp
