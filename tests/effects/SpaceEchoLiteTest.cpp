#include "effects/SpaceEchoLite.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <tuple>

#include "effects/TapeMotor.h"
#include "support/EchoMeters.h"
#include "support/ModuleRig.h"
#include "support/PlainTapeEcho.h"
#include "support/SeededClock.h"
#include "support/SideBySide.h"

namespace Quorvan::dsp {
namespace {

using test::CentreOf;
using test::Channel;
using test::Impulse;
using test::PeakOf;
using test::Stereo;
using E = SpaceEchoLite;

struct Rig : test::EffectRig<E> {
    using EffectRig::EffectRig;
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

// A last digit that falls otherwise in the filters' design comes back as noise of up to 4e-4 on the
// tape: the 100 Hz high-pass runs in single precision.
TEST(SpaceEchoLiteTest, MatchesAPlainModelWhileEverythingMoves) {
    for (const float rate : test::kRates) {
        const uint32_t seed = [] {
            const test::SeededClock same(21);
            return prims::SeedFromClock();
        }();
        const test::SeededClock clock(21);
        Rig rig(rate);
        test::PlainTapeEcho model(rig.module, rate, test::BlockOf(rate), seed);
        test::SideBySide pair(rig, model, rate);
        test::Dice& dice = pair.dice;
        rig.Set(E::DelayTime, 70.0f);
        rig.Set(E::DelayTimeFine, 0.0f);
        rig.Set(E::DryWet, 0.8f);
        uint32_t lit = 0;
        const float worst = pair.WorstError(1600, [&](uint32_t number) {
            EXPECT_EQ(rig.module.GetParameterNormalized(E::PeakMeter), model.meter) << number;
            lit += model.meter > 0.0f ? 1u : 0u;
            if (number % 20 == 0) {
                const uint32_t id = dice.Below(E::kParameterCount);
                if (id == E::DelayTime)
                    rig.Set(id, dice.Between(10.0f, 210.0f));
                else if (id == E::DelayTimeSynced)
                    rig.Set(id, static_cast<float>(dice.Below(3)));
                else if (id != E::PeakMeter)
                    rig.SetPosition(id, dice.Unit());
            }
            if (number % 60 == 40)
                pair.Modulate(2 + dice.Below(8), dice.Between(-0.04f, 0.06f));
            if (number == 900)
                pair.Reset(false);
            const float tapeDb = rig.module.Value(E::ConfInGainCompensated) + 20.0f;
            pair.unit = std::pow(10.0f, -0.05f * tapeDb);
        });
        EXPECT_LT(worst, 5.0e-4f) << rate;
        EXPECT_GT(lit, 50u) << rate;
        EXPECT_LT(lit, 1500u) << rate;
    }
}

TEST(SpaceEchoLiteTest, MotorTakesTwoSecondsUpAndOneDownAndStopsOnItsTarget) {
    for (const auto& [from, to, seconds] :
         {std::tuple{4800.0f, 24000.0f, 2.0}, {24000.0f, 4800.0f, 1.0}}) {
        TapeMotor motor;
        motor.Setup(48000.0f);
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
    const auto wide = levels(1.0f);
    // The right head is the left one without its comb, and feeds back what it has not passed.
    const double pass = double{wide[0][0]} / 0.001;
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
