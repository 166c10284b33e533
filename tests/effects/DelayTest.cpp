#include "effects/Delay.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/EchoMeters.h"
#include "support/ModuleRig.h"
#include "support/PlainDelay.h"
#include "support/SideBySide.h"

namespace Quorvan::dsp {
namespace {

using test::Channel;
using test::Impulse;
using test::kRates;
using test::Stereo;
using D = Delay;

struct Rig : test::EffectRig<D> {
    using EffectRig::EffectRig;
    /// Only the echo, filters as wide as they go.
    void Open(float delayMs) {
        Set(D::DelayTimeMs, delayMs);
        Set(D::Wet, 1.0f);
        Set(D::HPFreq, 20.0f);
        Set(D::LPFreq, 20000.0f);
    }
    /// Tells the module its switches and its tempo, waits for the glides, and silences it.
    void Rest() {
        const auto seconds = static_cast<size_t>(rate) * 2;
        for (int times = 0; times < 2; ++times) {
            Run({Channel(seconds), Channel(seconds)});
            module.Reset(false);
        }
    }
};

/// Delays short enough to be heard in the run, and high-passes from 200 Hz on, as lower ones make
/// much of the last digit.
float PositionFor(uint32_t id, float draw) {
    return id == D::DelayTimeMs ? 0.7f * draw : id == D::HPFreq ? 0.35f + 0.65f * draw : draw;
}

TEST(DelayTest, MatchesAPlainModelWhileEverythingMoves) {
    constexpr uint32_t highPassRow = 5;
    for (const float rate : kRates) {
        Rig rig(rate);
        test::PlainDelay model(rig.module, rate, test::BlockOf(rate));
        test::SideBySide pair(rig, model, rate);
        rig.SetPosition(D::HPFreq, 0.35f);
        const float worst = pair.WorstError(4000, [&](uint32_t number) {
            if (number % 2000 == 100 || number % 2000 == 450)
                pair.Reset(number % 2000 == 100);
            if (number % 2000 >= 400)  // still, until the delay is read at whole samples
                return;
            for (uint32_t id = 0; id < D::kParameterCount; ++id) {
                const bool isSwitch = id >= D::StereoMode && id <= D::RateSyncedType;
                if (pair.dice.Chance(isSwitch ? 0.01f : 0.03f))
                    rig.SetPosition(id, PositionFor(id, pair.dice.Unit()));
            }
            for (uint32_t channel = 2; number > 300 && channel < 10; ++channel) {
                const bool movesDelay = channel == 3 || channel >= 7;
                if (pair.dice.Chance(0.01f) && (number > 2000 || !movesDelay))
                    pair.Modulate(channel,
                                  pair.dice.Between(channel == highPassRow ? 0.0f : -0.5f, 0.5f));
            }
            rig.tempo = model.tempo = number / 100 % 2 == 0 ? 137.0f : 900.0f;
        });
        EXPECT_LT(worst, 5.0e-5f) << rate;
        EXPECT_GT(model.restingBlocks, 100u) << rate;
    }
}

TEST(DelayTest, OnlyRowsThatMoveTheDelayMakeItReadBetweenSamples) {
    for (const float mode : {0.0f, 1.0f}) {
        for (uint32_t channel = 2; channel < 10; ++channel) {
            Rig rig;
            test::PlainDelay model(rig.module, rig.rate, test::BlockOf(rig.rate));
            test::SideBySide pair(rig, model, rig.rate);
            rig.Open(17.777f);
            rig.Set(D::HPFreq, 200.0f);
            rig.Set(D::StereoMode, mode);
            pair.Modulate(channel, 0.0f);
            EXPECT_LT(pair.WorstError(1600, [](uint32_t) {}), 5.0e-5f) << channel << ", " << mode;
            const bool moves = channel == 3 || channel == 9 || (channel == 7 && mode == 0.0f);
            EXPECT_EQ(model.restingBlocks > 100, !moves) << channel << ", " << mode;
        }
    }
}

size_t LoudestAt(const Channel& signal) {
    size_t loudest = 0;
    for (size_t i = 1; i < signal.size(); ++i)
        if (std::abs(signal[i]) > std::abs(signal[loudest]))
            loudest = i;
    return loudest;
}

TEST(DelayTest, NotesLastAsTheTempoSaysAndStepDownToFourSeconds) {
    struct Case {
        float tempo, note, type;
        double seconds;
    };
    for (const Case& c : {Case{120.0f, 0.0f, 0.0f, 0.0625},
                          {120.0f, 3.0f, 0.0f, 0.5},
                          {120.0f, 3.0f, 1.0f, 1.0 / 3.0},
                          {90.0f, 2.0f, 2.0f, 0.5},
                          {120.0f, 8.0f, 0.0f, 4.0},
                          {30.0f, 7.0f, 0.0f, 4.0},
                          {30.0f, 7.0f, 2.0f, 3.0},
                          {100000.0f, 0.0f, 0.0f, 0.0001},
                          {0.0f, 0.0f, 0.0f, 4.0}}) {
        // The right line takes the longest delay and a fifth, and the longest fine part.
        for (const float width : {0.0f, 0.2f}) {
            Rig rig(48000.0f);
            rig.tempo = c.tempo;
            rig.Open(2.0f);
            rig.Set(D::MidiSync, 1.0f);
            rig.Set(D::DelayTimeSynced, c.note);
            rig.Set(D::RateSyncedType, c.type);
            rig.Set(D::StereoWidth, width);
            rig.Set(D::DelayFineMs, c.seconds == 4.0 ? 50.0f : 0.0f);
            rig.Rest();
            const Stereo output = rig.Run(Impulse(240000));
            const double late = c.seconds * 48000.0;
            const auto share = 1.0 + double{width};
            EXPECT_NEAR(static_cast<double>(LoudestAt(output[0])), late, 1.5) << c.tempo;
            EXPECT_NEAR(static_cast<double>(LoudestAt(output[1])), late * share, 1.5) << c.tempo;
        }
    }
}

}  // namespace
}  // namespace Quorvan::dsp
