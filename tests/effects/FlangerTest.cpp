#include "effects/Flanger.h"

#include <gtest/gtest.h>

#include "support/ModuleRig.h"
#include "support/PlainChorus.h"
#include "support/SeededClock.h"
#include "support/SideBySide.h"

namespace Quorvan::dsp {
namespace {

using test::Channel;
using test::kRates;
using C = Chorus;

/// With the ranges that a slot gives it.
struct Rig : test::ModuleRig<Flanger> {
    explicit Rig(float rate) : ModuleRig(rate, test::BlockOf(rate), "Flanger") {
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
        module.Setup(rate, test::BlockOf(rate));
    }
    C& Child() { return module.Child<0>(); }
    void Set(uint32_t id, float value) { module.SetParameterValue(id, value); }
    void Sweep(float minDelay, float depth) {
        Set(Flanger::MinDelay, minDelay);
        Set(Flanger::DepthFlanger, depth);
        module.Reset(true);  // passes the sweep on
        module.Reset(true);  // jumps to it
    }
};

TEST(FlangerTest, MatchesAPlainModelWhileEverythingMoves) {
    for (const float rate : kRates) {
        const test::SeededClock clock(1);
        Rig rig(rate);
        // Not the shortest delay: at whole samples the all-pass keeps what rounding gives it.
        rig.Sweep(0.5f, 2.0f);
        test::PlainChorus model(rig.Child(), rate, test::BlockOf(rate));
        test::SideBySide pair(rig, model, rate);
        const float worst = pair.WorstError(1500, [&](uint32_t number) {
            const float depth = rig.module.Value(Flanger::DepthFlanger);
            ASSERT_TRUE(number == 0 || rig.Child().Value(C::Depth) == depth);
            ASSERT_TRUE(number == 0 || rig.Child().Value(C::DelayMs) ==
                                           rig.module.Value(Flanger::MinDelay) + depth);
            for (const uint32_t id : {C::DryWet, C::Freq, C::Feedback, C::FBPolarity, C::StereoMode,
                                      C::LFOShape, C::LPFfc, C::HPFfc, C::LPFOn, C::HPFOn}) {
                if (pair.dice.Chance(0.02f)) {
                    rig.module.SetParameterNormalized(id, pair.dice.Unit());
                    model.written.insert(id);
                }
            }
            for (uint32_t channel = 2; channel < 5; ++channel)
                if (pair.dice.Chance(0.05f))
                    pair.Modulate(channel, pair.dice.Between(-0.5f, 0.5f));
            if (pair.dice.Chance(0.02f)) {
                rig.Set(Flanger::DepthFlanger, 10.0f * pair.dice.Unit());
                rig.Set(Flanger::MinDelay, 0.001f + 5.0f * pair.dice.Unit() * pair.dice.Unit());
                model.written.insert({C::DelayMs, C::Depth});
            }
        });
        EXPECT_LT(worst, 2.0e-5f) << rate;
    }
}

TEST(FlangerTest, ShortestDelayIsTwoSamples) {
    for (const float rate : kRates) {
        Rig rig(rate);
        rig.Set(C::LPFOn, 0.0f);
        rig.Set(C::HPFOn, 0.0f);
        rig.Set(C::DryWet, 1.0f);
        const Channel noise = test::Noise(1, 9600);
        const Channel output = rig.Run({noise, noise})[0];
        for (size_t i = 7000; i < 9600; ++i)  // behind the glide from the longer start
            ASSERT_NEAR(output[i], noise[i - 2], 1.0e-4f) << rate;
    }
}

}  // namespace
}  // namespace Quorvan::dsp
