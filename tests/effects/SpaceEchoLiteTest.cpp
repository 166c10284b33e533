#include "effects/SpaceEchoLite.h"

#include "support/SideBySide.h"

namespace Quorvan::dsp {
namespace {

using E = SpaceEchoLite;
using Rig = EffectRig<E>;

/// What a plain model gives that designs every filter anew for each sample and whose tapes have no
/// end.
const std::map<float, std::vector<double>> kPrint{
    {44100.0f, {0.05004,  0.25128, -0.00760, -0.00137, 0.20531,  0.07016,  0.04080,  -0.02046,
                -0.01335, 0.03462, -0.01526, 0.00551,  -0.02465, -0.05504, 0.07314,  -0.00120,
                -0.31111, 0.00617, -0.02494, -0.01590, 0.01055,  -0.09698, 0.02597,  -0.00149,
                -0.12365, 0.11332, 0.00591,  0.00852,  -0.26126, 0.03689,  -0.08914, 0.01380}},
    {48000.0f, {-0.00666, 0.27722, 0.04352,  0.02858,  0.10979,  0.15048,  0.03856,  -0.03816,
                0.02967,  0.09013, -0.00770, -0.01241, -0.20484, 0.06348,  -0.03237, -0.00511,
                -0.05545, 0.01337, 0.00572,  -0.00568, -0.00700, -0.06844, 0.01342,  -0.00569,
                -0.05248, 0.16038, 0.02453,  0.00087,  -0.24780, 0.03869,  -0.08198, -0.02673}},
    {96000.0f, {-0.03994, 0.25039, 0.04186,  -0.01107, -0.00152, 0.07982,  0.10343, -0.01009,
                -0.01126, 0.09932, -0.00201, -0.00188, 0.15703,  0.12519,  0.13902, -0.07742,
                -0.50400, 0.20599, 0.03206,  -0.01194, 0.12089,  0.01781,  0.08722, -0.09342,
                -0.14877, 0.06127, 0.03322,  0.00933,  -0.34354, -0.09836, 0.05915, 0.01718}}};

TEST(SpaceEchoLiteTest, SoundsAsAPlainModelWhileEverythingMoves) {
    uint32_t lit = 0;
    ExpectPrint<Rig>(kPrint, [&lit](auto& solo, uint32_t number) {
        Rig& rig = solo.rig;
        if (number == 0) {
            rig.Set(E::DelayTime, 70.0f);
            rig.Set(E::DelayTimeFine, 0.0f);
            rig.Set(E::DryWet, 0.8f);
            rig.Set(E::ConfInGainCompensated, -18.0f);
        }
        lit += rig.module.GetParameterNormalized(E::PeakMeter) > 0.0f ? 1u : 0u;
        if (number % 20 == 0) {
            const uint32_t id = solo.dice.Below(E::kParameterCount);
            if (id == E::DelayTime)
                rig.Set(id, solo.dice.Between(10.0f, 210.0f));
            else if (id == E::DelayTimeSynced)
                rig.Set(id, static_cast<float>(solo.dice.Below(3)));
            else if (id != E::PeakMeter && id != E::ConfInGainCompensated)
                rig.SetPosition(id, solo.dice.Unit());
        }
        if (number % 60 == 40)
            solo.Modulate(2 + solo.dice.Below(8), solo.dice.Between(-0.04f, 0.06f));
        if (number == 900)
            solo.Reset(false);
    });
    EXPECT_EQ(lit, 1138u);
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
