#include "effects/Delay.h"

#include "support/PlainDelay.h"

namespace Quorvan::dsp {
namespace {

using D = Delay;

using Rig = EffectRig<D>;

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
            for (const auto& [id, value] : {std::pair{D::DelayTimeMs, 17.777f},
                                            {D::Wet, 1.0f},
                                            {D::HPFreq, 200.0f},
                                            {D::LPFreq, 20000.0f},
                                            {D::StereoMode, mode}})
                rig.Set(id, value);
            pair.Modulate(channel, 0.0f);
            EXPECT_LT(pair.WorstError(1600, [](uint32_t) {}), 5.0e-5f) << channel << ", " << mode;
            const bool moves = channel == 3 || channel == 9 || (channel == 7 && mode == 0.0f);
            EXPECT_EQ(model.restingBlocks > 100, !moves) << channel << ", " << mode;
        }
    }
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
            Rig rig;
            rig.tempo = tempo;
            for (const auto& [id, value] : {std::pair{D::Wet, 1.0f},
                                            {D::MidiSync, 1.0f},
                                            {D::DelayTimeSynced, note},
                                            {D::RateSyncedType, type},
                                            {D::StereoWidth, width},
                                            {D::HPFreq, 20.0f},
                                            {D::LPFreq, 20000.0f},
                                            {D::DelayFineMs, seconds == 4.0 ? 50.0f : 0.0f}})
                rig.Set(id, value);
            const auto [left, right] = EchoSeconds(rig);
            EXPECT_NEAR(left, seconds, 5.0e-5) << tempo;
            EXPECT_NEAR(right, seconds * (1.0 + double{width}), 5.0e-5) << tempo;
        }
    }
}

}  // namespace
}  // namespace Quorvan::dsp
