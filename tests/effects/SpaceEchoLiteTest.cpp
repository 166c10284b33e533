#include "effects/SpaceEchoLite.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>

#include "effects/HeadLossTable.h"
#include "effects/TapeMotor.h"
#include "support/EchoMeters.h"
#include "support/ModuleRig.h"
#include "support/PlainTapeEcho.h"
#include "support/SeededClock.h"
#include "support/TestSignals.h"

namespace Quorvan::dsp {
namespace {

using test::CentreOf;
using test::Channel;
using test::Impulse;
using test::PeakOf;
using test::Stereo;
using E = SpaceEchoLite;

constexpr float kRate = 48000.0f;
constexpr uint32_t kBlock = 48;

struct Rig : test::ModuleRig<E> {
    explicit Rig(float rate = kRate, uint32_t block = kBlock) : ModuleRig(rate, block, "Echo") {}
    void Set(uint32_t id, float value) { module.SetParameterValue(id, value); }
    /// Wet, at unity into the tape, with the motor at rest and all glides over.
    void Open(float delayMs, float intensity, float pingPong = 0.0f) {
        Set(E::DelayTime, delayMs);
        Set(E::DelayTimeFine, 0.0f);
        Set(E::InputVolume, 0.0f);
        Set(E::Intensity, intensity);
        Set(E::DryWet, 1.0f);
        Set(E::DelayType, pingPong);
        Set(E::StereoWidthPP, 1.0f);
        Set(E::ConfInGainCompensated, -20.0f);
        module.Reset(true);
        Run({Channel(96000), Channel(96000)});
    }
};

TEST(SpaceEchoLiteTest, MatchesAPlainModelUnderJumpingParametersAndModulation) {
    for (const float rate : {44100.0f, 48000.0f, 96000.0f}) {
        const auto block = static_cast<uint32_t>(rate / 1000.0f) / 4 * 4;
        const uint32_t seed = [] {
            const test::SeededClock same(21);
            return prims::SeedFromClock();
        }();
        const test::SeededClock clock(21);
        Rig rig(rate, block);
        test::PlainTapeEcho plain(rig.module, rate, block, seed);
        std::mt19937 random(6);
        rig.Set(E::DelayTime, 70.0f);
        rig.Set(E::DelayTimeFine, 0.0f);
        rig.Set(E::DryWet, 0.8f);
        for (uint32_t round = 0; round < 50; ++round) {
            const auto id = static_cast<uint32_t>(random() % E::kParameterCount);
            const float position = static_cast<float>(random() % 1000) / 1000.0f;
            if (id == E::DelayTime)
                rig.Set(id, 10.0f + 200.0f * position);
            else if (id == E::DelayTimeSynced)
                rig.Set(id, static_cast<float>(random() % 3));
            else if (id != E::PeakMeter)
                rig.module.SetParameterNormalized(id, position);
            if (round % 3 == 0) {
                const auto row = static_cast<uint32_t>(2 + random() % 8);
                rig.Modulate(row, 0.1f * position - 0.04f);
                plain.Modulate(row, 0.1f * position - 0.04f);
            }
            const size_t length = block * (10 + random() % 60);
            const Stereo in = round % 4 == 3 ? Impulse(length)
                                             : Stereo{test::Noise(round, length, 0.3f),
                                                      test::Sine(440.0, double{rate}, length)};
            const Stereo expected = plain.Run(in);
            const Stereo out = rig.Run(in);
            // A last digit that falls otherwise in the filters' design comes back as noise of up to
            // 4e-4 on the tape: the 100 Hz high-pass runs in single precision.
            const float conf = rig.module.Value(E::ConfInGainCompensated);
            const float tolerance = 5e-4f * std::pow(10.0f, -0.05f * (conf + 20.0f));
            for (size_t c = 0; c < 2; ++c)
                for (size_t i = 0; i < length; ++i)
                    ASSERT_NEAR(out[c][i], expected[c][i], tolerance)
                        << rate << ' ' << round << ' ' << i;
            EXPECT_EQ(rig.module.GetParameterNormalized(E::PeakMeter), plain.meter);
            if (round == 25) {
                rig.module.Reset(false);
                plain.Reset();
            }
        }
    }
}

TEST(SpaceEchoLiteTest, HeadLossesLieOnLinesBetweenTheirKnots) {
    const HeadLossTable& table = HeadLossTable::Get();
    const auto expect = [&table](float ms, float head, float headQ, float gap, float gapQ) {
        const HeadLossTable::Entry entry = table.At(ms);
        EXPECT_NEAR(entry.headFrequency, head, 0.01f) << ms;
        EXPECT_NEAR(entry.headQ, headQ, 1e-6f) << ms;
        EXPECT_NEAR(entry.gapFrequency, gap, 0.01f) << ms;
        EXPECT_NEAR(entry.gapQ, gapQ, 1e-6f) << ms;
    };
    expect(60.0f, 16000.0f, 0.8f, 16100.0f, 0.49f);
    expect(77.0f, 16000.0f, 0.8f, 11434.15f, 0.48f);
    expect(83.5f, 16000.0f, 0.8f, 9993.75f, 0.47919f);
    expect(117.0f, 15809.5f, 0.790475f, 6619.05f, 0.45f);
    expect(156.25f, 14739.583f, 0.75f, 5143.75f, 0.414375f);
    expect(162.0f, 14500.0f, 0.75f, 5000.0f, 0.4f);
}

TEST(SpaceEchoLiteTest, MotorTakesTwoSecondsUpAndOneDownAndStopsOnItsTarget) {
    for (const auto& [from, to, seconds] :
         {std::tuple{4800.0f, 24000.0f, 2.0}, {24000.0f, 4800.0f, 1.0}}) {
        TapeMotor motor;
        motor.Setup(kRate);
        motor.Jump(from);
        const double way = double{from - to}, pole = std::exp(-5.0 / (seconds * 48000.0));
        // The way ends where what is left of it falls below the first step.
        const double rest = std::log(1.0 - pole) / std::log(pole);
        for (int n = 1; n < 200000; ++n) {
            const float now = motor.Step(to);
            if (n < rest - 10.0) {
                ASSERT_NEAR(now, double{to} + way * std::pow(pole, n), 0.01) << n;
            } else if (n > rest + 10.0) {
                ASSERT_EQ(now, to) << n;
            }
        }
        const float back = to < from ? motor.Step(to + 100.0f) - to : to - motor.Step(to - 100.0f);
        EXPECT_NEAR(back, 100.0 * (1.0 - std::exp(-5.0 * seconds / (2.0 * 48000.0))), 1e-3);
    }
}

/// Gain of the way from input to wet output at a frequency, without the tape and its saturation.
double ChainGain(double frequency, float delayMs, float lowPassHz, float highPassHz) {
    const double w = 2.0 * std::numbers::pi * frequency / double{kRate};
    const auto corner = [](float hertz) { return 6.2831855f * hertz / kRate; };
    test::PlainBiquad high, low, head, gap, bump;
    high.HighPass(corner(highPassHz), std::sin(corner(highPassHz)) * 0.70710355f);
    low.LowPass(corner(lowPassHz), std::sin(corner(lowPassHz)) * 0.70710355f);
    const HeadLossTable::Entry loss = HeadLossTable::Get().At(delayMs);
    const float wHead = corner(loss.headFrequency), wGap = corner(loss.gapFrequency);
    head.LowPass(wHead, std::sin(wHead) * 0.5f / loss.headQ);
    gap.LowPass(wGap, std::sin(wGap) * 0.5f / loss.gapQ);
    bump.HighPass(corner(100.0f), std::sin(corner(100.0f)));
    // The comb: its middle, and a running sum over twice the delay to it, both in phase.
    const double seconds = double{delayMs} * 0.001, middle = seconds * 48000.0 * 0.09130434;
    const double mix = (288.96002 - seconds * 1257.6) / 48000.0;
    const double comb = 1.00052 - mix + mix * std::sin(w * middle) / std::sin(0.5 * w);
    // The shelves are each other's inverse but for a little, which the test's tolerance covers.
    return 1.08 * 0.96967 * high.GainAt(w) * low.GainAt(w) * std::pow(head.GainAt(w), 5.0) *
           gap.GainAt(w) * bump.GainAt(w) * std::abs(comb);
}

TEST(SpaceEchoLiteTest, QuietEchoHasTheGainOfTheFiltersWhateverTheTapeLevel) {
    for (const double frequency : {60.0, 300.0, 1000.0, 4000.0}) {
        const Channel sine = test::Sine(frequency, 48000.0, 48000, 0.001f);
        for (const float conf : {-36.0f, -20.0f, 0.0f}) {
            Rig rig;
            rig.Open(100.0f, 0.0f);
            rig.Set(E::ConfInGainCompensated, conf);
            const Stereo out = rig.Run({sine, sine});
            const double wanted = 0.001 * ChainGain(frequency, 100.0f, 20000.0f, 20.0f);
            EXPECT_NEAR(PeakOf(out, 24000) / wanted, 1.0, 0.04) << frequency << ' ' << conf;
        }
    }
}

TEST(SpaceEchoLiteTest, WithoutIntensityThereIsOneEchoAtTheDelayTime) {
    struct Case {
        float delayMs, fineMs, leftMs, rightMs;
    };
    for (const Case& k :
         {Case{110.0f, 0.0f, 110.0f, 132.0f}, Case{300.0f, 25.0f, 325.0f, 390.0f},
          Case{10.0f, -50.0f, 10.0f, 10.0f}, Case{1000.0f, 0.0f, 1000.0f, 1200.0f}}) {
        Rig rig;
        rig.Open(k.delayMs, 0.0f);
        rig.Set(E::DelayTimeFine, k.fineMs);
        rig.Set(E::StereoWidth, 1.0f);
        rig.module.Reset(true);
        rig.Run({Channel(192000), Channel(192000)});  // the width has no jump
        const Stereo out = rig.Run(Impulse(96000, 0.1f));
        for (size_t c = 0; c < 2; ++c) {
            const double wanted = double{c == 0 ? k.leftMs : k.rightMs} * 48.0;
            // The filters add some ten samples, and the tape wobbles.
            EXPECT_NEAR(CentreOf(out[c], 0, out[c].size()), wanted + 10.0, 0.006 * wanted + 12.0)
                << k.leftMs << ' ' << c;
            EXPECT_LT(PeakOf({out[c], {}}, static_cast<size_t>(wanted * 1.2) + 3000),
                      0.01f * PeakOf({out[c], {}}));
        }
    }
}

TEST(SpaceEchoLiteTest, PingPongStandsLeftAtTheDelayAndRightAtTwice) {
    Rig rig;
    rig.Open(100.0f, 0.5f, 1.0f);
    const Channel burst = test::Sine(1000.0, 48000.0, 1920, 0.001f);
    Stereo in{Channel(48000), Channel(48000)};
    for (Channel& channel : in)
        std::copy(burst.begin(), burst.end(), channel.begin());
    const auto levels = [&](float apart) {
        rig.Set(E::StereoWidthPP, apart);
        rig.Run({Channel(192000), Channel(192000)});
        const Stereo out = rig.Run(in);
        std::array<std::array<float, 2>, 4> peaks{};
        for (size_t k = 0; k < 4; ++k)
            for (size_t c = 0; c < 2; ++c)
                peaks[k][c] = PeakOf(
                    {Channel(out[c].begin() + static_cast<std::ptrdiff_t>(4800 * (k + 1) + 700),
                             out[c].begin() + static_cast<std::ptrdiff_t>(4800 * (k + 1) + 1700)),
                     {}});
        return peaks;
    };
    // The right head is the left one without its comb, and feeds back what it has not passed.
    const double pass = ChainGain(1000.0, 100.0f, 20000.0f, 20.0f);
    const auto wide = levels(1.0f);
    const double back = 0.5 * 0.915;
    const double wanted[] = {pass, pass * pass, back * pass * pass, back * pass * pass * pass};
    for (size_t k = 0; k < 4; ++k) {
        EXPECT_NEAR(wide[k][k % 2] / (0.001 * wanted[k]), 1.0, 0.1) << k;
        EXPECT_LT(wide[k][1 - k % 2], 0.03f * wide[k][k % 2]) << k;
    }
    const auto narrow = levels(0.0f);
    for (size_t k = 0; k < 4; ++k) {
        EXPECT_NEAR(narrow[k][0] / wide[k][k % 2], 0.5, 0.02) << k;
        EXPECT_FLOAT_EQ(narrow[k][0], narrow[k][1]) << k;
    }
}

TEST(SpaceEchoLiteTest, LoopGainAboveOneSettlesAndBelowDiesAway) {
    const Stereo noise{test::Noise(1, 96000), test::Noise(2, 96000)};
    const Stereo silence{Channel(96000), Channel(96000)};
    for (const float rate : {44100.0f, 48000.0f, 96000.0f}) {
        for (const float pingPong : {0.0f, 1.0f}) {
            Rig rig(rate, static_cast<uint32_t>(rate / 1000.0f) / 4 * 4);
            rig.Open(80.0f, 1.2f, pingPong);
            EXPECT_LT(PeakOf(rig.Run(noise)), 2.5f);
            const float ringing = PeakOf(rig.Run(silence));
            EXPECT_GT(ringing, 0.2f);
            EXPECT_LT(ringing, 2.0f);
            rig.Set(E::Intensity, 0.3f);
            for (int seconds = 0; seconds < 6; seconds += 2)
                rig.Run(silence);
            EXPECT_LT(PeakOf(rig.Run(silence)), 1e-7f);
            rig.module.Reset(false);
            EXPECT_EQ(PeakOf(rig.Run(silence)), 0.0f);
        }
    }
}

TEST(SpaceEchoLiteTest, MixInPlaceAndAMissingInputAreAsTold) {
    const Stereo in{test::Noise(1, 24000, 0.5f), test::Noise(2, 24000, 0.5f)};
    const auto run = [](float dryWet, const auto& feed) {
        const test::SeededClock clock(9);
        Rig rig;
        rig.Open(50.0f, 0.5f);
        rig.Set(E::DryWet, dryWet);
        rig.Run({Channel(96000), Channel(96000)});
        return feed(rig);
    };
    const auto plainly = [&in](Rig& rig) { return rig.Run(in); };
    const Stereo both = run(0.5f, plainly), wet = run(1.0f, plainly);
    EXPECT_EQ(run(0.0f, plainly), in);
    for (size_t c = 0; c < 2; ++c)
        for (size_t i = 0; i < in[c].size(); ++i)
            EXPECT_NEAR(both[c][i], wet[c][i] + in[c][i], 1e-6f);
    const Stereo inPlace = run(0.5f, [&in](Rig& rig) {
        Stereo signal = in;
        rig.RunInPlace(signal);
        return signal;
    });
    EXPECT_EQ(inPlace, both);
    EXPECT_EQ(run(0.5f, [&in](Rig& rig) { return rig.RunMono(in[0]); }), run(0.5f, [&in](Rig& rig) {
                  return rig.Run({in[0], in[0]});
              }));
}

TEST(SpaceEchoLiteTest, MeterLightsUpAtOverloadOnly) {
    Rig rig;
    rig.Open(50.0f, 0.3f);
    const auto meterAt = [&rig](float level) {
        rig.Run({test::Noise(1, 48000, level), test::Noise(2, 48000, level)});
        return rig.module.GetParameterNormalized(E::PeakMeter);
    };
    EXPECT_EQ(meterAt(0.05f), 0.0f);
    EXPECT_EQ(meterAt(1.0f), 1.0f);
    EXPECT_EQ(meterAt(0.0f), 0.0f);
}

TEST(SpaceEchoLiteTest, NoTwoResetsFlutterAlike) {
    const test::SeededClock clock(3);
    Rig rig, other;
    const auto sound = [](Rig& echo) {
        echo.Open(300.0f, 0.5f);
        const Channel sine = test::Sine(1000.0, 48000.0, 48000);
        return echo.Run({sine, sine});
    };
    const Stereo first = sound(rig), second = sound(rig), third = sound(other);
    EXPECT_NE(first, second);
    EXPECT_NE(first, third);
}

}  // namespace
}  // namespace Quorvan::dsp
