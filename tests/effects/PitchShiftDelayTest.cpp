#include "effects/PitchShiftDelay.h"

#include <gtest/gtest.h>

#include <algorithm>
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

using test::CentreOf;
using test::Channel;
using test::FrequencyOf;
using test::Impulse;
using test::PeakOf;
using test::Stereo;
using P = PitchShiftDelay;

constexpr float kRate = 48000.0f;
constexpr uint32_t kBlock = 48;

struct Rig : test::ModuleRig<P> {
    explicit Rig(float rate = kRate, uint32_t block = kBlock) : ModuleRig(rate, block, "Delay") {}
    void Set(uint32_t id, float value) { module.SetParameterValue(id, value); }
    /// Filters wide open, no spread, no shift, and at rest there.
    void Open(float delayMs, float pitch = 0.0f) {
        Set(P::DelayTimeMs, delayMs);
        Set(P::PitchShift, pitch);
        Set(P::Window, 1.0f);
        Set(P::LPFreq, 20000.0f);
        Set(P::DelayOffset, 0.0f);
        Set(P::Detune, 0.0f);
        Rest();
    }
    /// One block tells the module that it isn't synced; then it jumps to all of its settings, but
    /// for the offset, which has its time.
    void Rest() {
        Run({Channel(kBlock), Channel(kBlock)});
        module.Reset(true);
        Run({Channel(96000), Channel(96000)});
    }
};

/// Random settings, also written to the module. The shift keeps still now and then, so that it gets
/// where it is headed.
void Jump(test::PlainPitchShift::Settings& s, Rig& rig, std::mt19937& random) {
    const auto draw = [&random](float from, float to) {
        return std::uniform_real_distribution<float>(from, to)(random);
    };
    const auto chance = [&](float share) { return draw(0.0f, 1.0f) < share; };
    const auto pick = [&random](int count) {
        return static_cast<int>(random() % static_cast<unsigned>(count));
    };
    s.stereo = chance(0.85f);
    s.delayMs = draw(1.0f, 120.0f);
    s.note = pick(3);
    s.feedback = draw(0.0f, 0.8f);
    if (chance(0.3f))
        s.pitch = chance(0.2f) ? 0.0f : chance(0.2f) ? draw(-0.2f, 0.2f) : draw(-24.0f, 24.0f);
    s.window = pick(3);
    s.sprayMs = chance(0.5f) ? 0.0f : draw(0.0f, 120.0f);
    s.highPassHz = draw(20.0f, 400.0f);
    s.lowPassHz = draw(2000.0f, 20000.0f);
    s.synced = chance(0.3f);
    s.rateType = pick(3);
    s.offsetMs = chance(0.3f) ? 0.0f : draw(-20.0f, 20.0f);
    s.detune = chance(0.5f) ? 0.0f : draw(-100.0f, 100.0f);
    s.modDelay = chance(0.2f);
    s.modOffset = chance(0.2f);
    const float values[] = {static_cast<float>(s.stereo),
                            s.delayMs,
                            static_cast<float>(s.note),
                            s.feedback,
                            s.pitch,
                            static_cast<float>(s.window),
                            s.sprayMs,
                            s.highPassHz,
                            s.lowPassHz,
                            static_cast<float>(s.synced),
                            static_cast<float>(s.rateType),
                            s.offsetMs,
                            s.detune,
                            static_cast<float>(s.modDelay),
                            static_cast<float>(s.modOffset)};
    for (uint32_t id = 0; id < P::kParameterCount; ++id)
        rig.Set(id, values[id]);
}

TEST(PitchShiftDelayTest, MatchesAPlainModelUnderJumpingParameters) {
    for (const float rate : {44100.0f, 48000.0f, 96000.0f}) {
        const auto block = static_cast<uint32_t>(rate / 1000.0f) / 4 * 4;
        const test::SeededClock clock(7);
        const uint32_t seed = [] {
            const test::SeededClock same(7);
            return prims::SeedFromClock();
        }();
        Rig rig(rate, block);
        test::PlainPitchShift plain(rate, block, seed);
        plain.Reset();
        std::mt19937 random(3);
        test::PlainPitchShift::Settings s;
        for (uint32_t round = 0; round < 40; ++round) {
            Jump(s, rig, random);
            const size_t length = block * (10 + random() % 100);
            Stereo in{test::Noise(round, length, 0.5f),
                      test::Sine(300.0 + round, double{rate}, length)};
            if (round % 4 == 3)
                in = Impulse(length);
            Stereo expected{Channel(length, 9.0f), Channel(length, 9.0f)};
            for (size_t at = 0; at < length; at += block)
                plain.Block(s, 120.0f, {in[0].data() + at, in[1].data() + at},
                            {expected[0].data() + at, expected[1].data() + at}, block);
            const Stereo out = rig.Run(in, 9.0f);
            for (size_t c = 0; c < 2; ++c)
                for (size_t i = 0; i < length; ++i)
                    ASSERT_NEAR(out[c][i], expected[c][i], 2e-5f)
                        << rate << ' ' << round << ' ' << i;
            if (round == 21) {
                rig.module.Reset(false);
                plain.Reset();
            }
        }
    }
}

TEST(PitchShiftDelayTest, AtNoShiftItIsADelayOfItsTimeAndOneSample) {
    for (const float delayMs : {30.0f, 100.0f, 333.3f}) {
        for (const float offsetMs : {0.0f, 10.0f}) {
            Rig rig;
            rig.Set(P::Spray, 500.0f);  // nothing, without a shift
            rig.Open(delayMs);
            rig.Set(P::DelayOffset, offsetMs);
            rig.Rest();
            const Stereo out = rig.Run(Impulse(24000));
            for (size_t c = 0; c < 2; ++c) {
                const double wanted = double{delayMs + (c == 0 ? -0.5f : 0.5f) * offsetMs} * 48.0;
                // The low-pass adds a sample, the main line drops less than one.
                EXPECT_NEAR(CentreOf(out[c], 0, out[c].size()), wanted + 2.0, 0.6) << delayMs;
            }
        }
    }
    Rig rig;
    rig.Open(20.0f);
    const Channel sine = test::Sine(1000.0, 48000.0, 9600);
    const Stereo out = rig.Run({sine, sine});
    EXPECT_NEAR(PeakOf(out, 4800), 1.0f, 0.01f);
}

TEST(PitchShiftDelayTest, EchoHasTheShiftedPitch) {
    const Channel sine = test::Sine(440.0, 48000.0, 96000);
    for (const float pitch : {-24.0f, -12.0f, -5.0f, -1.0f, 1.0f, 7.0f, 12.0f, 24.0f}) {
        Rig rig;
        rig.Open(50.0f, pitch);
        const Stereo out = rig.Run({sine, sine});
        const double wanted = 440.0 * std::exp2(double{pitch} / 12.0);
        EXPECT_NEAR(FrequencyOf(out[0], 24000, 96000, 48000.0) / wanted, 1.0, 0.02) << pitch;
        EXPECT_EQ(out[0], out[1]);  // without detuning the image stands still
    }
    Rig rig;
    rig.Open(50.0f);
    rig.Set(P::Detune, 100.0f);
    rig.Rest();
    const Stereo out = rig.Run({sine, sine});
    const double ratio =
        FrequencyOf(out[1], 24000, 96000, 48000.0) / FrequencyOf(out[0], 24000, 96000, 48000.0);
    EXPECT_NEAR(12.0 * std::log2(ratio), 1.0, 0.1);
}

TEST(PitchShiftDelayTest, SyncedTimeFollowsTempoNoteAndType) {
    struct Case {
        float note, type, seconds;
    };
    // At 120 beats a minute. The straight note is held to 4 s, then all to what the line takes.
    for (const Case& k :
         {Case{3.0f, 0.0f, 0.5f}, Case{3.0f, 1.0f, 0.33333f}, Case{3.0f, 2.0f, 0.75f},
          Case{8.0f, 0.0f, 4.0f}, Case{8.0f, 1.0f, 2.66667f}, Case{7.0f, 2.0f, 4.02f}}) {
        Rig rig;
        rig.Set(P::DelayTimeSynced, k.note);
        rig.Set(P::RateSyncedType, k.type);
        rig.Set(P::MidiSync, 0.5f);
        rig.Open(1.0f);
        const Stereo out = rig.Run(Impulse(48000 * 5));
        const double centre = CentreOf(out[0], 0, out[0].size());
        EXPECT_NEAR(centre, double{k.seconds} * 48000.0 + 1.0, 2.0) << k.note << ' ' << k.type;
    }
}

TEST(PitchShiftDelayTest, EchoesFallByTheFeedback) {
    Rig rig;
    rig.Open(100.0f);
    rig.Set(P::Feedback, 0.6f);
    Stereo in{Channel(48000), Channel(48000)};
    const Channel burst = test::Sine(500.0, 48000.0, 2400);
    std::copy(burst.begin(), burst.end(), in[0].begin());
    const Stereo out = rig.Run(in);
    for (size_t k = 1; k < 9; ++k) {
        const Channel echo(out[0].begin() + static_cast<std::ptrdiff_t>(k * 4801 + 960),
                           out[0].begin() + static_cast<std::ptrdiff_t>(k * 4801 + 1920));
        EXPECT_NEAR(PeakOf({echo, {}}) / std::pow(0.6f, static_cast<float>(k - 1)), 1.0f, 0.02f)
            << k;
    }
    EXPECT_EQ(PeakOf({Channel(), out[1]}), 0.0f);  // the channels keep apart
}

TEST(PitchShiftDelayTest, CutsMonoAndInPlaceMakeNoDifference) {
    const Stereo in{test::Noise(1, 19200), test::Noise(2, 19200)};
    const auto run = [&in](uint32_t block, float stereo, bool inPlace) {
        const test::SeededClock clock(5);
        Rig rig(kRate, block);
        rig.Set(P::Stereo, stereo);
        rig.Set(P::Spray, 30.0f);
        rig.Set(P::Feedback, 0.5f);
        rig.Open(60.0f, 5.0f);
        if (!inPlace)
            return rig.Run(in, 3.0f);
        Stereo signal = in;
        rig.RunInPlace(signal);
        return signal;
    };
    const Stereo out = run(kBlock, 1.0f, false);
    EXPECT_EQ(run(kBlock, 1.0f, true), out);
    EXPECT_EQ(run(16, 1.0f, false), out);
    const Stereo mono = run(kBlock, 0.0f, false);
    EXPECT_EQ(mono[0], out[0]);
    EXPECT_EQ(mono[1], Channel(in[1].size(), 3.0f));  // untouched
}

TEST(PitchShiftDelayTest, FullFeedbackStaysBoundedAndLessDiesAway) {
    const Stereo noise{test::Noise(1, 192000, 0.5f), test::Noise(2, 192000, 0.5f)};
    for (const float pitch : {-12.0f, 0.05f, 1.0f, 7.0f}) {
        Rig rig;
        rig.Set(P::Feedback, 1.0f);
        rig.Open(40.0f, pitch);
        EXPECT_LT(PeakOf(rig.Run(noise)), 6.0f) << pitch;
        rig.Set(P::Feedback, 0.5f);
        const Stereo silence{Channel(192000), Channel(192000)};
        rig.Run(silence);
        EXPECT_LT(PeakOf(rig.Run(silence)), 1e-7f) << pitch;
        rig.module.Reset(false);
        EXPECT_EQ(PeakOf(rig.Run(silence)), 0.0f);
    }
}

}  // namespace
}  // namespace Quorvan::dsp
