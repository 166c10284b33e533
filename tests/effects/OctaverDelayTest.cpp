#include "effects/OctaverDelay.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <random>

#include "support/EchoMeters.h"
#include "support/ModuleRig.h"
#include "support/PlainPitchShift.h"
#include "support/SeededClock.h"
#include "support/TestSignals.h"

namespace Quorvan::dsp {
namespace {

using test::Channel;
using test::FrequencyOf;
using test::Impulse;
using test::PeakOf;
using test::Stereo;
using O = OctaverDelay;

constexpr float kRate = 48000.0f;
constexpr uint32_t kBlock = 48;

struct Rig : test::ModuleRig<O> {
    explicit Rig(float rate = kRate, uint32_t block = kBlock) : ModuleRig(rate, block, "Octaver") {}
    void Set(uint32_t id, float value) { module.SetParameterValue(id, value); }
    /// Wet, filters open, nothing spread, and at rest there.
    void Open(float mode, float delayMs, float pitch, float feedback) {
        Set(O::Mode, mode);
        Set(O::DryWet, 1.0f);
        Set(O::DelayTimeMs, delayMs);
        Set(O::PitchShift, pitch);
        Set(O::Feedback, feedback);
        Set(O::Window, 1.0f);
        Set(O::LPFreq, 20000.0f);
        Set(O::DelayOffset, 0.0f);
        Set(O::Detune, 0.0f);
        Run({Channel(kBlock), Channel(kBlock)});  // tells the stages that they aren't synced
        module.Reset(true);
        Run({Channel(96000), Channel(96000)});
    }
};

/// Two plain pitch shifters, wired as the effect has them, which takes its settings from a module.
class Plain {
public:
    Plain(O& source, float rate, uint32_t blockFrames, const std::array<uint32_t, 2>& seeds)
        : module(source),
          frames(blockFrames),
          stages{test::PlainPitchShift(rate, blockFrames, seeds[0]),
                 test::PlainPitchShift(rate, blockFrames, seeds[1])},
          back{Channel(blockFrames), Channel(blockFrames)} {
        for (SmootherInterpLPF* smoother : {&wet, &loop}) {
            smoother->rampSteps = frames;
            test::SetUp(*smoother, rate, 1);
        }
    }

    void Modulate(uint32_t row, float amount) { rows[row] = amount; }

    void Block(const Stereo& in, Stereo& out, size_t at) {
        const auto newMode = static_cast<int>(module.Value(O::Mode));
        const bool due = newMode != std::exchange(mode, newMode);
        if (due) {
            for (auto& stage : stages)
                stage.Reset();
            back = {Channel(frames), Channel(frames)};
        }
        const float feedback = Get(O::Feedback, 4), mix = 2.0f * Get(O::DryWet, 2);
        Channel loopGain(frames), wetGain(frames);
        loop.SetTarget(mode == 0 ? 0.0f : feedback);
        loop.FillBlock(loopGain.data(), frames);
        if (due) {
            wet.Reset(mix);
            loop.Reset(feedback);
        }
        wet.SetTarget(mix);
        wet.FillBlock(wetGain.data(), frames);

        Stereo first = Buffer(), second = Buffer(), send = Buffer();
        for (size_t c = 0; c < 2; ++c)
            for (size_t n = 0; n < frames; ++n)
                send[c][n] = back[c][n] * loopGain[n] + in[c][at + n];
        RunStage(0, mode == 0 ? feedback : 0.0f, send, first);
        for (size_t c = 0; c < 2; ++c)
            for (size_t n = 0; n < frames; ++n)
                send[c][n] = first[c][n] * loopGain[n];
        if (mode != 0)
            RunStage(1, 0.0f, send, second);
        back = second;
        for (size_t c = 0; c < 2; ++c)
            for (size_t n = 0; n < frames; ++n)
                out[c][at + n] = (second[c][n] + first[c][n]) * std::min(wetGain[n], 1.0f) +
                                 in[c][at + n] * std::clamp(2.0f - wetGain[n], 0.0f, 1.0f);
    }

private:
    float Get(uint32_t id, uint32_t row) {
        return rows[row] == 0.0f ? module.Value(id)
                                 : module.ParameterAt(id).GetModulatedValue(rows[row]);
    }
    Stereo Buffer() const { return {Channel(frames), Channel(frames)}; }

    void RunStage(size_t stage, float feedback, const Stereo& in, Stereo& out) {
        const float shift = Get(O::PitchShift, 7);
        const float partner = mode == 0 ? shift : mode == 1 ? 12.0f - shift : -12.0f - shift;
        const test::PlainPitchShift::Settings s{
            .stereo = module.Value(O::Stereo) >= 0.5f,
            .delayMs = Get(O::DelayTimeMs, 3),
            .note = static_cast<int>(Get(O::DelayTimeSynced, 3)),
            .feedback = feedback,
            .pitch = stage == 0 ? shift : partner,
            .window = static_cast<int>(module.Value(O::Window)),
            .sprayMs = Get(O::Spray, 8),
            .highPassHz = Get(O::HPFreq, 5),
            .lowPassHz = Get(O::LPFreq, 6),
            .synced = module.Value(O::MidiSync) >= 0.5f,
            .rateType = static_cast<int>(module.Value(O::RateSyncedType)),
            .offsetMs = Get(O::DelayOffset, 9),
            .detune = stage == 0 ? Get(O::Detune, 10) : -Get(O::Detune, 10),
            .modDelay = rows[3] != 0.0f,
            .modOffset = rows[9] != 0.0f};
        stages[stage].Block(s, 120.0f, {in[0].data(), in[1].data()}, {out[0].data(), out[1].data()},
                            frames);
    }

    O& module;
    uint32_t frames;
    int mode = -1;
    std::array<test::PlainPitchShift, 2> stages;
    Stereo back;
    std::array<float, 11> rows{};
    SmootherInterpLPF wet{0.01}, loop{0.05};
};

TEST(OctaverDelayTest, MatchesAPlainModelUnderJumpingParametersAndModulation) {
    for (const float rate : {44100.0f, 48000.0f, 96000.0f}) {
        const auto block = static_cast<uint32_t>(rate / 1000.0f) / 4 * 4;
        std::array<uint32_t, 2> seeds{};
        {
            const test::SeededClock same(11);
            for (uint32_t& seed : seeds)
                seed = prims::SeedFromClock();
        }
        const test::SeededClock clock(11);
        Rig rig(rate, block);
        Plain plain(rig.module, rate, block, seeds);
        std::mt19937 random(4);
        rig.Set(O::LPFreq, 12000.0f);
        for (uint32_t round = 0; round < 60; ++round) {
            const auto id = static_cast<uint32_t>(O::Mode + random() % 15);
            const float position = static_cast<float>(random() % 1000) / 1000.0f;
            if (id == O::DelayTimeMs)
                rig.Set(id, 5.0f + 60.0f * position);  // short, so that the loop goes round
            else if (id == O::DelayTimeSynced)
                rig.Set(id, static_cast<float>(random() % 3));
            else if (id != O::Stereo && (id != O::Mode || round % 3 == 0))
                rig.module.SetParameterNormalized(id,
                                                  id == O::Feedback ? 0.7f * position : position);
            if (round % 2 == 0) {
                const auto row = static_cast<uint32_t>(2 + random() % 9);
                const float amount = 0.02f + 0.1f * position;
                rig.Modulate(row, amount);
                plain.Modulate(row, amount);
            }
            const size_t length = block * (10 + random() % 60);
            const Stereo in = round % 4 == 3 ? Impulse(length)
                                             : Stereo{test::Noise(round, length, 0.5f),
                                                      test::Sine(440.0, double{rate}, length)};
            Stereo expected{Channel(length), Channel(length)};
            for (size_t at = 0; at < length; at += block)
                plain.Block(in, expected, at);
            const Stereo out = rig.Run(in);
            for (size_t c = 0; c < 2; ++c)
                for (size_t i = 0; i < length; ++i)
                    ASSERT_NEAR(out[c][i], expected[c][i], 2e-6f)
                        << rate << ' ' << round << ' ' << i;
        }
    }
}

TEST(OctaverDelayTest, LoopClimbsOrFallsByOctavesAtTheDelayTime) {
    for (const float mode : {1.0f, 2.0f}) {
        for (const float pitch : {7.0f, -3.0f}) {
            Rig rig;
            rig.Open(mode, 250.0f, pitch, 1.0f);
            Stereo in{Channel(48000), Channel(48000)};
            const Channel burst = test::Sine(600.0, 48000.0, 12000);
            for (Channel& channel : in)
                std::copy(burst.begin(), burst.end(), channel.begin());
            const Stereo out = rig.Run(in);
            const double octave = mode == 1.0f ? 2.0 : 0.5;
            const double step = std::exp2(double{pitch} / 12.0);
            const double ratios[] = {step, octave};
            for (size_t k = 0; k < 2; ++k) {
                const size_t begin = (k + 1) * 12000 + 3000;
                EXPECT_NEAR(FrequencyOf(out[0], begin, begin + 8000, 48000.0) / (600.0 * ratios[k]),
                            1.0, 0.03)
                    << mode << ' ' << pitch << ' ' << k;
            }
        }
    }
    Rig rig;
    rig.Open(1.0f, 100.0f, 7.0f, 0.0f);  // the second stage gets silence
    const Stereo out = rig.Run(Impulse(24000));
    EXPECT_GT(PeakOf(out), 0.1f);
    EXPECT_LT(PeakOf(out, 2 * 4800 + 4000), 1e-5f);
}

TEST(OctaverDelayTest, MixIsFullDryAndFullWetInTheMiddle) {
    const Stereo in{test::Noise(1, 24000), test::Noise(2, 24000)};
    const auto run = [&in](float dryWet) {
        Rig rig;
        rig.Open(0.0f, 60.0f, 3.0f, 0.5f);
        rig.Set(O::DryWet, dryWet);
        rig.Run({Channel(9600), Channel(9600)});  // the mix settles, and nothing else is under way
        return rig.Run(in);
    };
    const Stereo dry = run(0.0f), both = run(0.5f), wet = run(1.0f), more = run(0.75f);
    EXPECT_EQ(dry, in);
    EXPECT_GT(PeakOf(wet), 0.5f);
    for (size_t c = 0; c < 2; ++c) {
        for (size_t i = 0; i < in[c].size(); ++i) {
            EXPECT_NEAR(both[c][i], wet[c][i] + in[c][i], 1e-6f);
            EXPECT_NEAR(more[c][i], wet[c][i] + 0.5f * in[c][i], 1e-6f);
        }
    }
}

TEST(OctaverDelayTest, ModeChangeSilencesBothStages) {
    const Stereo noise{test::Noise(1, 24000), test::Noise(2, 24000)};
    const Stereo silence{Channel(24000), Channel(24000)};
    Rig rig;
    rig.Open(1.0f, 100.0f, 5.0f, 0.8f);
    rig.Run(noise);
    rig.Set(O::Mode, 2.0f);
    EXPECT_EQ(PeakOf(rig.Run(silence)), 0.0f);
    rig.Run(noise);
    rig.Set(O::Mode, 0.0f);
    EXPECT_EQ(PeakOf(rig.Run(silence)), 0.0f);
    rig.Run(noise);
    EXPECT_GT(PeakOf(rig.Run(silence)), 0.1f);
}

TEST(OctaverDelayTest, MonoGivesADryRightChannel) {
    Rig rig;
    rig.Open(1.0f, 60.0f, 5.0f, 0.5f);
    rig.Set(O::DryWet, 0.5f);
    const Stereo noise{test::Noise(1, 24000), test::Noise(2, 24000)};
    rig.Run(noise);
    rig.Set(O::Stereo, 0.0f);
    rig.Run(noise);
    const Stereo out = rig.Run(noise);
    EXPECT_EQ(out[1], noise[1]);
    EXPECT_GT(PeakOf({out[0], {}}), 1.2f);
    EXPECT_EQ(rig.RunMono(noise[0])[1], noise[0]);  // a missing input reads as the left one
}

TEST(OctaverDelayTest, LoopAtFullFeedbackStaysBoundedAndDiesAwayBelowIt) {
    const Stereo noise{test::Noise(1, 192000, 0.5f), test::Noise(2, 192000, 0.5f)};
    const Stereo silence{Channel(192000), Channel(192000)};
    for (const float mode : {0.0f, 1.0f, 2.0f}) {
        for (const float pitch : {-12.0f, 0.05f, 7.0f}) {
            Rig rig;
            rig.Open(mode, 40.0f, pitch, 1.0f);
            EXPECT_LT(PeakOf(rig.Run(noise)), 10.0f) << mode << ' ' << pitch;
            EXPECT_LT(PeakOf(rig.Run(silence)), 10.0f) << mode << ' ' << pitch;
            rig.Set(O::Feedback, 0.6f);
            rig.Run(silence);
            EXPECT_LT(PeakOf(rig.Run(silence)), 1e-7f) << mode << ' ' << pitch;
        }
    }
}

}  // namespace
}  // namespace Quorvan::dsp
