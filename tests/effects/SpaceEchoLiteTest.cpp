#include "effects/SpaceEchoLite.h"

#include "support/PlainTapeEcho.h"

namespace Quorvan::dsp {
namespace {

using E = SpaceEchoLite;
using Rig = EffectRig<E>;

// A last digit that falls otherwise in the filters' design comes back as noise of up to 4e-4 on the
// tape: the 100 Hz high-pass runs in single precision.
TEST(SpaceEchoLiteTest, MatchesAPlainModelWhileEverythingMoves) {
    uint32_t lit = 0;
    ExpectAlike<Rig, PlainTapeEcho>(1600, 5.0e-4f, [&lit](auto& pair, uint32_t number) {
        Rig& rig = pair.rig;
        if (number == 0) {
            rig.Set(E::DelayTime, 70.0f);
            rig.Set(E::DelayTimeFine, 0.0f);
            rig.Set(E::DryWet, 0.8f);
        }
        EXPECT_EQ(rig.module.GetParameterNormalized(E::PeakMeter), pair.model.meter) << number;
        lit += pair.model.meter > 0.0f ? 1u : 0u;
        if (number % 20 == 0) {
            const uint32_t id = pair.dice.Below(E::kParameterCount);
            if (id == E::DelayTime)
                rig.Set(id, pair.dice.Between(10.0f, 210.0f));
            else if (id == E::DelayTimeSynced)
                rig.Set(id, static_cast<float>(pair.dice.Below(3)));
            else if (id != E::PeakMeter)
                rig.SetPosition(id, pair.dice.Unit());
        }
        if (number % 60 == 40)
            pair.Modulate(2 + pair.dice.Below(8), pair.dice.Between(-0.04f, 0.06f));
        if (number == 900)
            pair.Reset(false);
        const float tapeDb = rig.module.Value(E::ConfInGainCompensated) + 20.0f;
        pair.unit = std::pow(10.0f, -0.05f * tapeDb);
    });
    EXPECT_GT(lit, 150u);
    EXPECT_LT(lit, 4500u);
}

TEST(SpaceEchoLiteTest, NoTwoResetsFlutterAlike) {
    const SeededClock clock(3);
    Rig rig, other;
    const auto sound = [](Rig& echo) {
        echo.Set(E::Intensity, 0.5f);
        echo.Set(E::DryWet, 1.0f);
        echo.module.Reset(true);
        const Channel sine = Sine(1000.0, 48000.0, 48000);
        return echo.Run({sine, sine});
    };
    const Stereo first = sound(rig), second = sound(rig), third = sound(other);
    EXPECT_NE(first, second);
    EXPECT_NE(first, third);
}

}  // namespace
}  // namespace Quorvan::dsp
