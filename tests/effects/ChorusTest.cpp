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

/// With the ranges that a slot gives it.
struct Rig : ModuleRig<Flanger> {
    explicit Rig(float rate) : ModuleRig(rate, BlockOf(rate), "Flanger") {
        module.Configure(Flanger::MinDelay, PotardKind::kLinear, 0.001f, 10.0f);
        module.Configure(Flanger::DepthFlanger, PotardKind::kLinear, 0.0f, 10.0f);
        C& chorus = Child();
        chorus.Configure(C::Feedback, PotardKind::kExponential, 0.0f, 0.99f, -1.0f);
        chorus.Configure(C::Freq, PotardKind::kExponential, 0.005f, 10.0f, 3.0f);
        chorus.Configure(C::LPFfc, PotardKind::kExponential, 1000.0f, 20000.0f, 4.0f);
        chorus.Configure(C::HPFfc, PotardKind::kExponential, 30.0f, 800.0f, 4.0f);
        Set(C::LPFfc, 9935.0f);
        Set(C::HPFfc, 125.0f);
        Set(C::StereoMode, 1.0f);
        module.Setup(rate, BlockOf(rate));
        // Not the shortest delay: at whole samples the all-pass keeps what rounding gives it.
        Sweep(0.5f, 2.0f);
    }
    void Sweep(float minDelay, float depth) {
        Set(Flanger::MinDelay, minDelay);
        Set(Flanger::DepthFlanger, depth);
        module.Reset(true);  // passes the sweep on
        module.Reset(true);  // jumps to it
    }
    C& Child() { return module.Child<0>(); }
    void Set(uint32_t id, float value) { module.SetParameterValue(id, value); }
};

/// The model of its chorus, which runs between the ends of the sweep.
struct Model : PlainChorus {
    Model(Flanger& flanger, float sampleRate, uint32_t blockFrames)
        : PlainChorus(flanger.Child<0>(), sampleRate, blockFrames) {}
};

TEST(FlangerTest, MatchesAPlainModelWhileEverythingMoves) {
    ExpectAlike<Rig, Model>(1500, 2.0e-5f, [](auto& pair, uint32_t number) {
        Rig& rig = pair.rig;
        const float depth = rig.module.Value(Flanger::DepthFlanger);
        ASSERT_TRUE(number == 0 || rig.Child().Value(C::Depth) == depth);
        ASSERT_TRUE(number == 0 ||
                    rig.Child().Value(C::DelayMs) == rig.module.Value(Flanger::MinDelay) + depth);
        for (const uint32_t id : {C::DryWet, C::Freq, C::Feedback, C::FBPolarity, C::StereoMode,
                                  C::LFOShape, C::LPFfc, C::HPFfc, C::LPFOn, C::HPFOn}) {
            if (pair.dice.Chance(0.02f)) {
                rig.module.SetParameterNormalized(id, pair.dice.Unit());
                pair.model.written.insert(id);
            }
        }
        for (uint32_t channel = 2; channel < 5; ++channel)
            if (pair.dice.Chance(0.05f))
                pair.Modulate(channel, pair.dice.Between(-0.5f, 0.5f));
        if (pair.dice.Chance(0.02f)) {
            rig.Set(Flanger::DepthFlanger, 10.0f * pair.dice.Unit());
            rig.Set(Flanger::MinDelay, 0.001f + 5.0f * pair.dice.Unit() * pair.dice.Unit());
            pair.model.written.insert({C::DelayMs, C::Depth});
        }
    });
}

TEST(FlangerTest, ShortestDelayIsTwoSamples) {
    for (const float rate : kRates) {
        Rig rig(rate);
        rig.Sweep(0.001f, 0.0f);
        rig.Set(C::LPFOn, 0.0f);
        rig.Set(C::HPFOn, 0.0f);
        rig.Set(C::DryWet, 1.0f);
        const Channel noise = Noise(1, 9600);
        const Channel output = rig.Run({noise, noise})[0];
        for (size_t i = 7000; i < 9600; ++i)
            ASSERT_NEAR(output[i], noise[i - 2], 1.0e-4f) << rate;
    }
}

}  // namespace
}  // namespace Quorvan::dsp
