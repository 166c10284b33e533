#include "effects/Delay.h"

#include "support/PlainDelay.h"

namespace Quorvan::dsp {
namespace {

using D = Delay;

struct Rig : EffectRig<D> {
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
    ExpectAlike<Rig, PlainDelay>(4000, 5.0e-5f, [](auto& pair, uint32_t number) {
        if (number == 0)
            pair.rig.SetPosition(D::HPFreq, 0.35f);
        if (number % 2000 == 100 || number % 2000 == 450)
            pair.Reset(number % 2000 == 100);
        EXPECT_TRUE(number < 3999 || pair.model.restingBlocks > 100u);
        if (number % 2000 >= 400)  // still, until the delay is read at whole samples
            return;
        for (uint32_t id = 0; id < D::kParameterCount; ++id) {
            const bool isSwitch = id >= D::StereoMode && id <= D::RateSyncedType;
            if (pair.dice.Chance(isSwitch ? 0.01f : 0.03f))
                pair.rig.SetPosition(id, PositionFor(id, pair.dice.Unit()));
        }
        for (uint32_t channel = 2; number > 300 && channel < 10; ++channel) {
            const bool movesDelay = channel == 3 || channel >= 7;
            const float least = channel == highPassRow ? 0.0f : -0.5f;
            if (pair.dice.Chance(0.01f) && (number > 2000 || !movesDelay))
                pair.Modulate(channel, pair.dice.Between(least, 0.5f));
        }
        pair.rig.tempo = pair.model.tempo = number / 100 % 2 == 0 ? 137.0f : 900.0f;
    });
}

TEST(DelayTest, OnlyRowsThatMoveTheDelayMakeItReadBetweenSamples) {
    for (const float mode : {0.0f, 1.0f}) {
        for (uint32_t channel = 2; channel < 10; ++channel) {
            Rig rig;
            PlainDelay model(rig.module, rig.rate, BlockOf(rig.rate));
            SideBySide pair(rig, model, rig.rate);
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

double LoudestAt(const Channel& signal) {
    const auto louder = [](float a, float b) { return std::abs(a) < std::abs(b); };
    return static_cast<double>(std::ranges::max_element(signal, louder) - signal.begin());
}

TEST(DelayTest, NotesLastAsTheTempoSaysAndStepDownToFourSeconds) {
    for (const auto& [tempo, note, type, seconds] : {std::tuple(120.0f, 0.0f, 0.0f, 0.0625),
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
            rig.tempo = tempo;
            rig.Open(2.0f);
            rig.Set(D::MidiSync, 1.0f);
            rig.Set(D::DelayTimeSynced, note);
            rig.Set(D::RateSyncedType, type);
            rig.Set(D::StereoWidth, width);
            rig.Set(D::DelayFineMs, seconds == 4.0 ? 50.0f : 0.0f);
            rig.Rest();
            const Stereo output = rig.Run(Impulse(240000));
            const double late = seconds * 48000.0;
            EXPECT_NEAR(LoudestAt(output[0]), late, 1.5) << tempo;
            EXPECT_NEAR(LoudestAt(output[1]), late * (1.0 + width), 1.5) << tempo;
        }
    }
}

}  // namespace
}  // namespace Quorvan::dsp
