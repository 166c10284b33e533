// What the slot and each of its effects promise about what they hold and what is handed to them.
#include "slots/FxVariant.h"
#include "support/SideBySide.h"

namespace Quorvan::Processor {
namespace {

using Fx = FxVariant;

Stereo NoisePair(uint32_t seed, size_t length) {
    return {Noise(seed, length, 0.5f), Noise(seed + 1, length, 0.5f)};
}

struct Rig : ModuleRig<Fx> {
    Rig(uint32_t number, float rate, uint32_t seed)
        : ModuleRig(rate, BlockOf(rate), "FX1"), effect(number), dice(seed) {
        Choose(effect);
        Jump(1.0f);
        module.SetParameterValue(Fx::DryWetInternal, 1.0f);
        for (uint32_t channel = 2; channel < module.NumInputs(); ++channel)
            Modulate(channel, dice.Between(-0.2f, 0.2f));
    }
    void Choose(uint32_t number) { module.SetParameterValue(Fx::ModuleType, float(number)); }
    void Set(uint32_t id, float position) { module.SetParameterNormalized(id, position); }
    void Jump(float share) {
        for (uint32_t id = Fx::kOffsets[effect]; id < Fx::kOffsets[effect + 1]; ++id)
            if (dice.Chance(share))
                Set(id, dice.Unit());
    }

    uint32_t effect;
    Dice dice;
};

class SlotStateTest : public ::testing::TestWithParam<uint32_t> {
protected:
    /// What comes out behind some noise and whatever is done between, for several settings.
    static std::vector<Stereo> Outputs(const std::function<void(Rig&)>& before,
                                       const std::function<void(Rig&)>& between) {
        std::vector<Stereo> outputs;
        for (uint32_t seed = 1; seed < 7; ++seed) {
            const SeededClock clock(5);
            Rig rig(GetParam(), 48000.0f, seed);
            before(rig);
            rig.Run(NoisePair(5, 9600));
            between(rig);
            Stereo last = NoisePair(9, 9600);
            for (Channel& channel : last)
                std::fill_n(channel.begin() + 2400, 7200, 0.0f);
            outputs.push_back(rig.Run(last));
        }
        return outputs;
    }
    static void Nothing(Rig&) {}
};

TEST_P(SlotStateTest, EffectStartsAfreshAndGoesOnWithTheStateItWasLeftIn) {
    const Stereo meanwhile = NoisePair(7, 4800);
    const auto visitOthers = [&](Rig& rig) {
        rig.Choose(rig.effect % 9 + 1);
        rig.Run(meanwhile);
        rig.Choose(Fx::kPassThrough);
        EXPECT_EQ(rig.Run(meanwhile), meanwhile);
        rig.module.Reset(true);  // reaches PassThrough alone
        rig.Choose(rig.effect);
    };
    const auto wanted = Outputs(Nothing, Nothing);
    EXPECT_TRUE(Outputs(visitOthers, Nothing) == wanted);
    EXPECT_TRUE(Outputs(Nothing, visitOthers) == wanted);
    const auto reset = [](Rig& rig) { rig.module.Reset(false); };
    EXPECT_TRUE(GetParam() == Fx::kPassThrough || Outputs(Nothing, reset) != wanted);
}

TEST_P(SlotStateTest, BypassHoldsTheEffect) {
    const Stereo meanwhile = NoisePair(11, 960);
    const auto bypass = [&](Rig& rig) {
        rig.Set(Fx::Bypass, 1.0f);
        EXPECT_EQ(rig.Run(meanwhile, 9.0f), meanwhile);
        rig.Set(Fx::CopyOnBypass, 0.0f);
        EXPECT_EQ(rig.Run(meanwhile, 9.0f), (Stereo{Channel(960), Channel(960)}));
        rig.Set(Fx::Bypass, 0.0f);
    };
    EXPECT_TRUE(Outputs(Nothing, bypass) == Outputs(Nothing, Nothing));
}

TEST(SlotTest, EffectsRunInPlace) {
    for (uint32_t effect = 0; effect < 10; ++effect)
        for (const float rate : kRates)
            for (uint32_t seed = 1; seed < 4 && effect != Fx::kDistortion; ++seed) {
                // The distortion's mix reads the input behind it.
                std::vector<Stereo> outputs;
                for (const bool inPlace : {true, false}) {
                    const SeededClock clock(5);
                    Rig rig(effect, rate, seed);
                    Stereo signal = NoisePair(3, 4836);  // the last block is a short one
                    for (const float jump : {0.0f, 1.0f}) {
                        rig.Jump(jump);
                        inPlace ? rig.RunInPlace(signal) : void(signal = rig.Run(signal));
                    }
                    outputs.push_back(signal);
                }
                EXPECT_TRUE(outputs[0] == outputs[1]) << effect << " at " << rate;
            }
}

TEST_P(SlotStateTest, DryIsTheInput) {
    ModuleRig<Fx> rig(48000.0f, 48, "FX1");
    rig.module.SetParameterValue(Fx::ModuleType, static_cast<float>(GetParam()));
    for (const uint32_t chorus : {Fx::kOffsets[Fx::kChorus], Fx::kOffsets[Fx::kFlanger]})
        rig.module.SetParameterValue(chorus + dsp::Chorus::StereoMode, 1.0f);
    rig.module.SetParameterValue(Fx::DryWetInternal, 0.0f);
    rig.module.Reset(true);
    const Stereo input = NoisePair(1, 4800);
    EXPECT_TRUE(rig.Run(input) == input);
}

INSTANTIATE_TEST_SUITE_P(Effects, SlotStateTest, ::testing::Range(0u, 10u));

}  // namespace
}  // namespace Quorvan::Processor
