#include "modulation/StepSequencer.h"

#include "support/GeneratorRig.h"
#include "support/PlainParts.h"

namespace Quorvan::dsp {
namespace {

constexpr uint32_t kBlock = 64;  // at 750 Hz a cycle, whose steps are exact in binary

using Rig = GeneratorRig<StepSequencer>;
using Steps = std::vector<int>;

/// A step a block, with the value of step i at i / 32.
struct Sequence : Rig {
    Sequence(StepLoop loop, uint32_t steps) : Rig(48000.0f, kBlock, "StepSeq") {
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
    std::vector<float> Deviations() {
        std::vector<float> all;
        for (uint32_t i = 0; i < StepSequencer::kMaxSteps; ++i)
            all.push_back(module.Value(StepSequencer::StepDev1 + i));
        return all;
    }
    /// The steps of the next blocks; drawing becomes the numbers of those with new deviations.
    Steps Play(int blocks) {
        Steps played;
        drawing.clear();
        for (int b = 0; b < blocks; ++b) {
            const std::vector<float> before = Deviations();
            Block();
            played.push_back(Current());
            if (Deviations() != before)
                drawing.push_back(b);
        }
        return played;
    }

    Steps drawing;
};

TEST(StepSequencerTest, OrdersTurnWhereTheyShouldAndDrawWhereAPassBegins) {
    const std::vector<std::tuple<StepLoop, uint32_t, Steps, Steps>> cases{
        {kForward, 4, {0, 1, 2, 3, 0, 1, 2, 3, 0}, {0, 4, 8}},
        {kBackward, 4, {3, 2, 1, 0, 3, 2, 1, 0, 3}, {0, 4, 8}},
        {kBackAndForth, 3, {0, 1, 2, 2, 1, 0, 0, 1, 2}, {0, 6}},
        {kBackAndForth, 1, {0, 0, 0, 0}, {0, 2}}};
    for (const auto& [loop, steps, played, drawing] : cases) {
        Sequence sequence(loop, steps);
        EXPECT_EQ(sequence.Play(static_cast<int>(played.size())), played);
        EXPECT_EQ(sequence.drawing, drawing);
    }
    Sequence sequence(kRandom, 5);
    const Steps random = sequence.Play(400);
    EXPECT_EQ(std::set<int>(random.begin(), random.end()), (std::set<int>{0, 1, 2, 3, 4}));
    EXPECT_EQ(sequence.drawing.size(), random.size());
}

TEST(StepSequencerTest, SmallDeviationsAreTheLikeliest) {
    Sequence sequence(kRandom, 4);
    double count = 0.0, small = 0.0, sum = 0.0;
    for (; count < 300 * StepSequencer::kMaxSteps; sequence.Block())
        for (const float deviation : sequence.Deviations()) {
            ASSERT_LE(std::abs(deviation), 1.0f);
            small += std::abs(deviation) < 0.1f;
            sum += deviation;
            ++count;
        }
    // P(|xy| < a) = a (1 - ln a) for x and y uniform in -1..1.
    EXPECT_NEAR(small / count, 0.1 * (1.0 - std::log(0.1)), 0.02);
    EXPECT_NEAR(sum / count, 0.0, 0.02);
}

TEST(StepSequencerTest, StepCountFollowsItsRowAndPullsInAtTheNextTick) {
    Sequence moved(kForward, 1);
    moved.Modulate(1, 0.1f);  // 1 + floor(32 * 0.1)
    EXPECT_EQ(moved.Play(6), (Steps{0, 1, 2, 3, 0, 1}));

    Sequence sequence(kForward, 8);
    sequence.Set(StepSequencer::RateUnSynced, 375.0f);  // two blocks a step
    EXPECT_EQ(sequence.Play(13).back(), 6);
    sequence.Set(StepSequencer::NbSteps, 3.0f);
    EXPECT_EQ(sequence.Play(5), (Steps{6, 0, 0, 1, 1}));
}

TEST(StepSequencerTest, OutputIsTheStepsValueMovedByItsDeviationAheadOfTheCurve) {
    Sequence sequence(kForward, 16);
    for (const float amount : {0.0f, 1.0f}) {
        sequence.Set(StepSequencer::RandomAmount, amount);
        sequence.Forget();
        for (uint32_t i = 0; i < 16; ++i) {
            const uint32_t kind = i < 8 ? PotardKind::kPolynomial : PotardKind::kRaw;
            const uint32_t id = StepSequencer::StepVal1 + i;
            sequence.module.Configure(id, kind, -2.0f, 2.0f, 3.0f);
            sequence.module.SetParameterNormalized(id, static_cast<float>(i) / 15.0f);
        }
        for (uint32_t b = 0; b < 48; ++b) {
            sequence.Block();
            const auto step = static_cast<uint32_t>(sequence.Current());
            const double moved = step / 15.0 + amount * sequence.Deviations()[step];
            const double held = std::clamp(moved, 0.0, 1.0);
            EXPECT_NEAR(sequence.outputs[0].back(),
                        step < 8 ? 4.0 * held * held * held - 2.0 : held, 1e-5);
        }
    }
}

TEST(StepSequencerTest, SmoothJumpsToTheFirstValueAndGlidesFromThere) {
    Sequence sequence(kForward, 2);
    sequence.Set(StepSequencer::StepVal1, 0.25f);
    sequence.Set(StepSequencer::StepVal1 + 1, 0.75f);
    sequence.Play(2);
    const auto heard = [&sequence](float smooth, int blocks) {
        sequence.Set(StepSequencer::Smooth, smooth);
        sequence.Forget();
        sequence.Play(blocks);
        return sequence.outputs[0];
    };
    const std::vector<float> glide = heard(0.5f, 2);  // of a step: 32 samples
    for (uint32_t i = 0; i < kBlock; ++i) {
        EXPECT_EQ(glide[i], 0.25f);
        EXPECT_NEAR(glide[kBlock + i], 0.75 - 0.5 * std::exp(-5.0 * (i + 1) / 32.0), 1e-5);
    }
    EXPECT_EQ(heard(0.0f, 1), std::vector<float>(kBlock, 0.25f));
    EXPECT_EQ(heard(1.0f, 1), std::vector<float>(kBlock, 0.75f));
}

// Wherever the song is when it starts, step and song agree, and stay so.
TEST(StepSequencerTest, HardFollowPlacesTheSequenceByTheSong) {
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
                    ASSERT_EQ(sequence.Current(), PlainStep(loop, static_cast<int>(end), 5))
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
