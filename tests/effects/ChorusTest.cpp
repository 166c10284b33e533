#include "effects/Chorus.h"

#include "effects/Flanger.h"
#include "support/PlainChorus.h"

namespace Quorvan::dsp {
namespace {

using C = Chorus;

TEST(ChorusTest, MatchesAPlainModelWhileEverythingMoves) {
    ExpectAlike<EffectRig<C>, PlainChorus>(1500, 2.0e-5f, [](auto& pair, uint32_t number) {
        for (uint32_t id = 0; id < C::kParameterCount; ++id) {
            const bool isSwitch = id >= C::FBPolarity && id != C::LPFfc && id != C::HPFfc;
            if (pair.dice.Chance(isSwitch ? 0.01f : 0.05f)) {
                pair.rig.SetPosition(id, pair.dice.Unit());
                pair.model.written.insert(id);
            }
        }
        for (uint32_t channel = 2; channel < 5; ++channel)
            if (pair.dice.Chance(0.05f))
                pair.Modulate(channel, pair.dice.Between(-0.5f, 0.5f));
        if (number % 400 == 399)
            pair.Reset(number % 800 == 799);
        pair.rig.tempo = pair.model.tempo = number < 700 ? 120.0f : 1000.0f;
    });
}

TEST(FlangerTest, SweepsItsChorusFromTheShortestDelayOfTwoSamplesUp) {
    for (const float rate : kRates) {
        EffectRig<Flanger> rig(rate);
        C& chorus = rig.module.Child<0>();
        for (const auto& [least, depth] : {std::pair{3.0f, 2.0f}, {0.001f, 0.0f}}) {
            rig.Set(Flanger::MinDelay, least);
            rig.Set(Flanger::DepthFlanger, depth);
            rig.Run(Impulse(48));
            EXPECT_EQ(chorus.Value(C::Depth), depth);
            EXPECT_EQ(chorus.Value(C::DelayMs), least + depth);
        }
        for (const auto& [id, value] :
             {std::pair{C::LPFOn, 0.0f}, {C::HPFOn, 0.0f}, {C::Feedback, 0.0f}, {C::DryWet, 1.0f}})
            rig.Set(id, value);
        rig.module.Reset(true);
        const Channel noise = Noise(1, 9600);
        const Channel output = rig.Run({noise, noise})[0];
        for (size_t i = 7000; i < 9600; ++i)
            ASSERT_NEAR(output[i], noise[i - 2], 1.0e-4f) << rate;
    }
}

}  // namespace
}  // namespace Quorvan::dsp
