#include "effects/Chorus.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>

#include "support/EchoMeters.h"
#include "support/ModuleRig.h"
#include "support/PlainChorus.h"
#include "support/SeededClock.h"
#include "support/SideBySide.h"

namespace Quorvan::dsp {
namespace {

using test::Channel;
using test::kRates;
using test::ResponseAt;
using test::Stereo;
using C = Chorus;

struct Rig : test::EffectRig<C> {
    using EffectRig::EffectRig;
    /// One voice, stereo, without motion, feedback or filters, at rest there.
    void Still(float delayMs, float dryWet) {
        Set(C::DelayMs, delayMs);
        Set(C::Depth, 0.0f);
        Set(C::DryWet, dryWet);
        Set(C::StereoMode, 1.0f);
        module.Reset(true);
    }
};

TEST(ChorusTest, MatchesAPlainModelWhileEverythingMoves) {
    for (const float rate : kRates) {
        const test::SeededClock clock(1);
        Rig rig(rate);
        test::PlainChorus model(rig.module, rate, test::BlockOf(rate));
        test::SideBySide pair(rig, model, rate);
        const float worst = pair.WorstError(1500, [&](uint32_t number) {
            for (uint32_t id = 0; id < C::kParameterCount; ++id) {
                const bool isSwitch = id >= C::FBPolarity && id != C::LPFfc && id != C::HPFfc;
                if (pair.dice.Chance(isSwitch ? 0.01f : 0.05f)) {
                    rig.SetPosition(id, pair.dice.Unit());
                    model.written.insert(id);
                }
            }
            for (uint32_t channel = 2; channel < 5; ++channel)
                if (pair.dice.Chance(0.05f))
                    pair.Modulate(channel, pair.dice.Between(-0.5f, 0.5f));
            if (number % 400 == 399)
                pair.Reset(number % 800 == 799);
            rig.tempo = model.tempo = number < 700 ? 120.0f : 1000.0f;
        });
        EXPECT_LT(worst, 2.0e-5f) << rate;
    }
}

/// Milliseconds of a delay that ends halfway between two samples at 48 kHz: there the all-pass
/// answers a click with 1/3, 8/9, -8/27 and so on.
float Halfway(int samples) { return (static_cast<float>(samples) + 0.5f) / 48.0f; }

TEST(ChorusTest, MixIsEqualPowerAndTheDelayWhereItIsSet) {
    for (const auto& [dryWet, dry, wet] :
         {std::array{0.0f, 1.0f, 0.0f}, {0.5f, 0.70710678f, 0.70710678f}, {1.0f, 0.0f, 1.0f}}) {
        for (const int samples : {30, 240, 959}) {
            Rig rig;
            rig.Still(Halfway(samples), dryWet);
            const Channel output = rig.Run(test::Impulse(2400))[1];
            const auto at = static_cast<size_t>(samples);
            EXPECT_NEAR(output[0], dry, 1.0e-6f);
            EXPECT_EQ(output[at - 1], 0.0f);
            EXPECT_NEAR(output[at], wet / 3.0f, 2.0e-4f) << samples;
            EXPECT_NEAR(output[at + 1], wet * 8.0f / 9.0f, 2.0e-4f) << samples;
        }
    }
}

TEST(ChorusTest, FeedbackMakesACombByItsSign) {
    for (const float polarity : {0.0f, 1.0f}) {
        Rig rig;
        rig.Set(C::Feedback, 0.6f);
        rig.Set(C::FBPolarity, polarity);
        rig.Still(5.0f, 1.0f);
        // 5 ms: peaks of one sign at the multiples of 200 Hz, of the other between.
        const double atMultiple = polarity == 1.0f ? 1.0 / 0.4 : 1.0 / 1.6;
        const double between = polarity == 1.0f ? 1.0 / 1.6 : 1.0 / 0.4;
        for (const double hertz : {200.0, 1000.0, 9000.0}) {
            EXPECT_NEAR(std::abs(ResponseAt(rig, hertz, 48000.0f)), atMultiple, 1.0e-3);
            EXPECT_NEAR(std::abs(ResponseAt(rig, hertz - 100.0, 48000.0f)), between, 1.0e-3);
        }
    }
}

TEST(ChorusTest, FiltersOfTheWetSignalAreThreeDecibelsDownAtTheirCorners) {
    Rig rig;
    rig.Set(C::LPFOn, 1.0f);
    rig.Set(C::LPFfc, 3000.0f);
    rig.Still(2.0f, 1.0f);
    EXPECT_NEAR(std::abs(ResponseAt(rig, 30.0, 48000.0f)), 1.0, 1.0e-3);
    EXPECT_NEAR(std::abs(ResponseAt(rig, 3000.0, 48000.0f)), std::sqrt(0.5), 1.0e-3);
    rig.Set(C::LPFOn, 0.0f);
    rig.Set(C::HPFOn, 1.0f);
    rig.Set(C::HPFfc, 100.0f);
    rig.module.Reset(true);
    EXPECT_NEAR(std::abs(ResponseAt(rig, 100.0, 48000.0f)), std::sqrt(0.5), 1.0e-3);
}

// At the time an echo comes out the oscillator has gone on from where it went in.
TEST(ChorusTest, DelaySweepsWithTheOscillatorTheRightAQuarterCycleAhead) {
    for (const int shape : {0, 1}) {
        Rig rig;
        rig.Set(C::Freq, 1.0f);
        rig.Set(C::LFOShape, static_cast<float>(shape));
        rig.Still(10.0f, 1.0f);
        rig.Set(C::Depth, 4.0f);
        rig.module.Reset(true);
        const Stereo output = rig.Run(test::Clicks(20, 2400));
        for (size_t c = 0; c < 2; ++c) {
            const auto delays = test::EchoDelays(output[c], 2400);
            for (size_t k = 0; k < delays.size(); ++k) {
                const double seconds = (static_cast<double>(k * 2400) + delays[k]) / 48000.0;
                const double sine =
                    std::sin(2.0 * std::numbers::pi * (seconds + 0.25 * static_cast<double>(c)));
                const double swing = shape == 0 ? sine : std::asin(sine) * 2.0 / std::numbers::pi;
                EXPECT_NEAR(delays[k] / 48000.0, 0.010 + 0.004 * swing, 0.00005)
                    << shape << ", " << c << ", " << k;
            }
        }
    }
}

}  // namespace
}  // namespace Quorvan::dsp
