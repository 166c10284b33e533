#include "effects/SpaceEchoLite.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/ModuleRig.h"
#include "support/PlainTapeEcho.h"
#include "support/SeededClock.h"
#include "support/SideBySide.h"

namespace Quorvan::dsp {
namespace {

using test::Channel;
using test::Stereo;
using E = SpaceEchoLite;
using Rig = test::EffectRig<E>;

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

TEST(SpaceEchoLiteTest, NoTwoResetsFlutterAlike) {
    const test::SeededClock clock(3);
    Rig rig, other;
    const auto sound = [](Rig& echo) {
        echo.Set(E::Intensity, 0.5f);
        echo.Set(E::DryWet, 1.0f);
        echo.module.Reset(true);
        const Channel sine = test::Sine(1000.0, 48000.0, 48000);
        return echo.Run({sine, sine});
    };
    const Stereo first = sound(rig), second = sound(rig), third = sound(other);
    EXPECT_NE(first, second);
    EXPECT_NE(first, third);
}

}  // namespace
}  // namespace Quorvan::dsp
