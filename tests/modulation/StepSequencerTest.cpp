#include "modulation/StepSequencer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <vector>

#include "support/GeneratorRig.h"

namespace Quorvan::dsp {
namespace {

constexpr float kRate = 48000.0f;
constexpr uint32_t kBlock = 64;  // at 750 Hz a cycle, whose steps are exact in binary

using Rig = test::GeneratorRig<StepSequencer>;
using Steps = std::vector<int>;

/// A step a block, with the value of step i at i / 32.
struct Sequence : Rig {
    Sequence(StepLoop loop, uint32_t steps) : Rig(kRate, kBlock, "StepSeq") {
        module.Configure(StepSequencer::RateUnSynced, PotardKind::kLinear, 0.0f, 2000.0f);
        for (uint32_t i = 0; i < StepSequencer::kMaxSteps; ++i) {
            module.Configure(StepSequencer::StepVal1 + i, PotardKind::kLinear, 0.0f, 1.0f);
            Set(StepSequencer::StepVal1 + i, static_cast<float>(i) / 32.0f);
        }
        Set(StepSequencer::RateUnSynced, 750.0f);
        Set(StepSequencer::LoopMode, static_cast<float>(loop));
        Set(StepSequencer::NbSteps, static_cast<float>(steps));
    }
    /// Locked to the song, a quarter note a step: 24000 samples.
    void LockToSong(float hardFollow) {
        Set(StepSequencer::MidiSync, 1.0f);
        Set(StepSequencer::RateSynced, 5.0f);
        Set(StepSequencer::SppHardFollow, hardFollow);
        playing = true;
    }
    int Current() { return static_cast<int>(module.Value(StepSequencer::CurrentStep)); }
    Steps Play(uint32_t blocks) {
        Steps played;
        for (uint32_t b = 0; b < blocks; ++b) {
            Block();
            played.push_back(Current());
        }
        return played;
    }
    std::vector<float> Deviations() {
        std::vector<float> all;
        for (uint32_t i = 0; i < StepSequencer::kMaxSteps; ++i)
            all.push_back(module.Value(StepSequencer::StepDev1 + i));
        return all;
    }
    /// Numbers of the blocks among the next that draw new deviations.
    Steps BlocksThatDraw(uint32_t blocks) {
        Steps drawing;
        for (uint32_t b = 0; b < blocks; ++b) {
            const std::vector<float> before = Deviations();
            Block();
            if (Deviations() != before)
                drawing.push_back(static_cast<int>(b));
        }
        return drawing;
    }
};

TEST(StepSequencerTest, OrdersStartAtTheirFirstStepAndTurnWhereTheyShould) {
    EXPECT_EQ(Sequence(kForward, 4).Play(6), (Steps{0, 1, 2, 3, 0, 1}));
    EXPECT_EQ(Sequence(kBackward, 4).Play(6), (Steps{3, 2, 1, 0, 3, 2}));
    EXPECT_EQ(Sequence(kBackAndForth, 3).Play(9), (Steps{0, 1, 2, 2, 1, 0, 0, 1, 2}));
    EXPECT_EQ(Sequence(kBackAndForth, 1).Play(4), (Steps{0, 0, 0, 0}));
    const Steps random = Sequence(kRandom, 5).Play(400);
    EXPECT_EQ(std::set<int>(random.begin(), random.end()), (std::set<int>{0, 1, 2, 3, 4}));
}

TEST(StepSequencerTest, DeviationsChangeWhereAPassBegins) {
    EXPECT_EQ(Sequence(kForward, 4).BlocksThatDraw(10), (Steps{0, 4, 8}));
    EXPECT_EQ(Sequence(kBackward, 4).BlocksThatDraw(10), (Steps{0, 4, 8}));
    EXPECT_EQ(Sequence(kBackAndForth, 3).BlocksThatDraw(10), (Steps{0, 6}));
    EXPECT_EQ(Sequence(kRandom, 4).BlocksThatDraw(3), (Steps{0, 1, 2}));
}

TEST(StepSequencerTest, SmallDeviationsAreTheLikeliest) {
    Sequence sequence(kRandom, 4);
    uint32_t count = 0, small = 0;
    double sum = 0.0;
    for (uint32_t b = 0; b < 300; ++b) {
        sequence.Block();
        for (const float deviation : sequence.Deviations()) {
            ASSERT_LE(std::abs(deviation), 1.0f);
            small += std::abs(deviation) < 0.1f ? 1 : 0;
            sum += static_cast<double>(deviation);
            ++count;
        }
    }
    // P(|xy| < a) = a (1 - ln a) for x and y uniform in -1..1.
    EXPECT_NEAR(static_cast<double>(small) / count, 0.1 * (1.0 - std::log(0.1)), 0.02);
    EXPECT_NEAR(sum / count, 0.0, 0.02);
}

TEST(StepSequencerTest, FewerStepsPullTheSequenceInAtTheNextTick) {
    Sequence sequence(kForward, 8);
    sequence.Set(StepSequencer::RateUnSynced, 375.0f);  // two blocks a step
    EXPECT_EQ(sequence.Play(13).back(), 6);
    sequence.Set(StepSequencer::NbSteps, 3.0f);
    EXPECT_EQ(sequence.Play(5), (Steps{6, 0, 0, 1, 1}));
}

TEST(StepSequencerTest, StepCountFollowsItsRow) {
    Sequence sequence(kForward, 1);
    sequence.Modulate(1, 0.1f);  // 1 + floor(32 * 0.1)
    EXPECT_EQ(sequence.Play(6), (Steps{0, 1, 2, 3, 0, 1}));
}

TEST(StepSequencerTest, OutputIsTheStepsValueMovedByItsDeviationAheadOfTheCurve) {
    Sequence sequence(kForward, 16);
    for (const float amount : {0.0f, 1.0f}) {
        sequence.Set(StepSequencer::RandomAmount, amount);
        sequence.Forget();
        for (uint32_t i = 0; i < 16; ++i) {
            const uint32_t kind = i < 8 ? PotardKind::kPolynomial : PotardKind::kRaw;
            sequence.module.Configure(StepSequencer::StepVal1 + i, kind, -2.0f, 2.0f, 3.0f);
            sequence.module.SetParameterNormalized(StepSequencer::StepVal1 + i,
                                                   static_cast<float>(i) / 15.0f);
        }
        for (uint32_t b = 0; b < 48; ++b) {
            sequence.Block();
            const auto step = static_cast<uint32_t>(sequence.Current());
            const float moved =
                static_cast<float>(step) / 15.0f + amount * sequence.Deviations()[step];
            const float held = std::clamp(moved, 0.0f, 1.0f);
            const float wanted = step < 8 ? 4.0f * held * held * held - 2.0f : held;
            EXPECT_NEAR(sequence.outputs[0].back(), wanted, 1e-5f);
        }
    }
}

TEST(StepSequencerTest, SmoothJumpsToTheFirstValueAndGlidesFromThere) {
    Sequence sequence(kForward, 2);
    sequence.Set(StepSequencer::StepVal1, 0.25f);
    sequence.Set(StepSequencer::StepVal1 + 1, 0.75f);
    sequence.Play(2);
    sequence.Set(StepSequencer::Smooth, 0.5f);  // of a step: 32 samples
    sequence.Forget();
    sequence.Play(2);
    EXPECT_EQ(sequence.outputs[0][0], 0.25f);
    EXPECT_EQ(sequence.outputs[0][kBlock - 1], 0.25f);
    for (uint32_t i = 0; i < kBlock; ++i)
        EXPECT_NEAR(sequence.outputs[0][kBlock + i], 0.75 - 0.5 * std::exp(-5.0 * (i + 1) / 32.0),
                    1e-5);
    sequence.Set(StepSequencer::Smooth, 0.0f);
    sequence.Forget();
    sequence.Play(1);
    EXPECT_EQ(sequence.outputs[0], std::vector<float>(kBlock, 0.25f));
    sequence.Set(StepSequencer::Smooth, 1.0f);
    sequence.Forget();
    sequence.Play(1);
    EXPECT_EQ(sequence.outputs[0], std::vector<float>(kBlock, 0.75f));
}

// Wherever the song is when it starts, step and song agree, and stay so.
TEST(StepSequencerTest, HardFollowPlacesTheSequenceByTheSong) {
    const auto expected = [](StepLoop loop, int cycle) {
        const int way = cycle % 10;
        return loop == kForward    ? cycle % 5
               : loop == kBackward ? 4 - cycle % 5
                                   : (way < 5 ? way : 9 - way);
    };
    for (const StepLoop loop : {kForward, kBackward, kBackAndForth}) {
        for (const double from : {0.0, 2.5, 7.0, 38.999, 1203.7}) {
            Sequence sequence(loop, 5);
            sequence.LockToSong(1.0f);
            sequence.position = from;
            for (uint32_t b = 0; b < 4600; ++b) {
                const double end = sequence.position + 63.0 / 24000.0;
                sequence.Block();
                // Near a beat the float position decides which block has it.
                if (std::abs(end - std::round(end)) > 0.01) {
                    ASSERT_EQ(sequence.Current(), expected(loop, static_cast<int>(end)))
                        << loop << ", from " << from;
                }
                sequence.Forget();
            }
        }
    }
}

TEST(StepSequencerTest, LockedTicksOfTheSameCycleCountOnce) {
    Sequence sequence(kForward, 8);
    sequence.LockToSong(1.0f);
    sequence.position = 2.999;
    EXPECT_EQ(sequence.Play(2), (Steps{3, 3}));
    for (uint32_t again = 0; again < 3; ++again) {
        sequence.position = 2.9995;  // back over the start of cycle 3
        sequence.Forget();
        EXPECT_EQ(sequence.Play(2), (Steps{3, 3}));
        EXPECT_FALSE(sequence.TickSteps().empty());
    }
    sequence.position = 3.9995;
    EXPECT_EQ(sequence.Play(2), (Steps{4, 4}));
}

TEST(StepSequencerTest, StartsBeforeTheFirstCycleStayInTheSequence) {
    Sequence sequence(kForward, 4);
    sequence.playing = true;  // a free rate goes on through a restart: no tick for a while
    sequence.Set(StepSequencer::RateUnSynced, 1.0f);
    sequence.Set(StepSequencer::SppHardFollow, 1.0f);
    sequence.Play(3);
    sequence.module.Restart();
    sequence.Forget();
    EXPECT_EQ(sequence.Play(2), (Steps{3, 3}));
    EXPECT_EQ(sequence.cycles[0], -1.0f);
}

}  // namespace
}  // namespace Quorvan::dsp
