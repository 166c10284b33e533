#include "effects/Reverb.h"

#include "support/PlainReverb.h"

namespace Quorvan::dsp {
namespace {

using R = Reverb;
using Core = DattorroCore;

using Rig = EffectRig<R>;

/// Predelay, size and damping rest now and then, or stand at their bottoms.
void Jump(Rig& rig, Dice& dice) {
    for (uint32_t id = 0; id < R::kParameterCount; ++id) {
        if (id == R::EarlyOn || id == R::InvertEarly || id == Core::Freeze)
            continue;
        const bool mayRest = id == Core::Predelay || id == Core::Size || id == Core::Damping;
        const bool isGlide = id == Core::SmoothTimeDelay || id == R::SmoothTimeDelayCont;
        const float low = mayRest && dice.Chance(0.1f) ? 0.0f : dice.Unit();
        if (!mayRest || dice.Chance(0.4f))
            rig.SetPosition(id, (isGlide ? 0.1f : 0.85f) * low);
    }
    rig.Set(Core::Freeze, dice.Chance(0.15f) ? 1.0f : 0.0f);
    rig.Set(R::EarlyOn, dice.Chance(0.6f) ? 1.0f : 0.0f);
    rig.Set(R::InvertEarly, dice.Chance(0.5f) ? 1.0f : 0.0f);
}

TEST(ReverbTest, MatchesAPlainModelWhileEverythingMoves) {
    ExpectAlike<Rig, PlainReverb>(2400, 1.0e-5f, [](auto& pair, uint32_t number) {
        pair.mayLackRight = false;
        if (number % 40 == 0) {
            Jump(pair.rig, pair.dice);
            for (uint32_t row = 2; row < 10 && number >= 900; ++row)
                pair.Modulate(row, (row == 9 ? 5.0f : 1.0f) * pair.dice.Between(-0.3f, 0.3f));
        }
        if (number % 600 == 430)
            pair.Reset(number % 1200 == 430);
    });
}

TEST(ReverbTest, LowAndUnusableRatesStayStable) {
    const Stereo in{Noise(1, 24000), Noise(2, 24000)};
    for (const float rate : {-1.0f, 0.0f, 8000.0f, 10001.0f, 22050.0f}) {
        ModuleRig<R> rig(rate, 48, "");
        rig.module.SetParameterValue(Core::Predelay, 0.2f);
        rig.module.SetParameterValue(Core::Size, 0.1f);
        rig.module.SetParameterValue(R::EarlyOn, 1.0f);
        rig.module.SetParameterValue(R::EarlyMix, 0.5f);
        const float peak = PeakOf(rig.Run(in));
        EXPECT_GT(peak, 0.1f) << rate;
        EXPECT_LT(peak, 5.0f) << rate;
    }
}

TEST(ReverbTest, ThePlateRunsAtItsReferenceRateBelowItAndStartsAfreshAtANewOne) {
    ModuleRig<Core> low(8000.0f, 48, ""), reference(29761.0f, 48, "");
    for (auto* rig : {&low, &reference}) {
        rig->module.SetParameterValue(Core::Predelay, 0.01f);
        rig->module.Reset(true);
    }
    const Channel in = Noise(1, 9600);
    EXPECT_EQ(low.RunMono(in), reference.RunMono(in));
    ModuleRig<Core> fresh(96000.0f, 48, "");
    fresh.module.SetParameterValue(Core::Predelay, 0.01f);
    for (auto* rig : {&low, &fresh})
        rig->module.Setup(96000.0f, 48);
    EXPECT_EQ(low.RunMono(in), fresh.RunMono(in));
}

}  // namespace
}  // namespace Quorvan::dsp
