#include "granular/StepSequencerGranular.h"

#include "granular/GranularTables.h"
#include "support/GeneratorRig.h"
#include "support/PlainParts.h"
#include "support/SeededClock.h"

namespace Quorvan::dsp {
namespace {

using Seq = StepSequencerGranular;
using Steps = std::vector<int32_t>;

constexpr uint32_t kBlock = 4;  // shorter than a step, so that a block holds one tick at most
constexpr double kBeatsPerSample = 120.0 / 60.0 / 48000.0;
constexpr double kStepsPerBeat = 64.0;  // of 1/256 notes: 375 samples each

struct Pattern : GeneratorRig<Seq> {
    explicit Pattern(StepLoop loop, uint32_t steps)
        : GeneratorRig(48000.0f, kBlock, "StepSequencerGranular") {
        module.SetSyncedRates(kMainRates.data(), kMainRates.size());
        Set(Seq::MidiSync, 1.0f);
        Set(Seq::RateSynced, 8.0f);
        Set(Seq::LoopMode, static_cast<float>(loop));
        SetSteps(steps);
        for (uint32_t i = 0; i < Seq::kMaxSteps; ++i)
            Set(Seq::StepOnOff1 + i, 1.0f);
    }
    void SetSteps(uint32_t steps) { Set(Seq::NbSteps, static_cast<float>(steps)); }
    void Start(double from) {
        position = from;
        playing = true;
    }
    int32_t Step() { return module.Index(Seq::CurrentStep); }
    /// The steps that the next count ticks bring.
    Steps Next(size_t count) {
        Steps found;
        for (uint32_t limit = 0; found.size() < count && limit < 100000; ++limit) {
            Forget();
            Block();
            if (!TickSteps().empty())
                found.push_back(Step());
        }
        return found;
    }
};

// Forward, backward and back and forth are functions of the clock's cycle; a turn takes one tick
// without moving. Wherever the transport starts, the pattern is in its place from the first block.
TEST(StepSequencerGranularTest, StepsAreWhereTheSongPositionPutsThem) {
    for (const StepLoop loop : {kForward, kBackward, kBackAndForth})
        for (const int32_t steps : {1, 2, 5, 16})
            for (const double from : {0.0, 3.305, 17.771, 1000.125}) {
                Pattern pattern(loop, static_cast<uint32_t>(steps));
                pattern.Next(7);  // the clock has been running by itself
                pattern.Start(from);
                for (uint32_t i = 0; i < 4000; ++i) {
                    const double end = pattern.position + kBeatsPerSample * (kBlock - 1);
                    pattern.Block();
                    const double cycle = end * kStepsPerBeat;
                    // Single precision places the tick within a few samples.
                    if (std::abs(cycle - std::round(cycle)) < 0.02)
                        continue;
                    ASSERT_EQ(pattern.Step(), PlainStep(loop, static_cast<int32_t>(cycle), steps))
                        << "loop " << loop << ", " << steps << " steps from " << from << " at "
                        << end;
                }
            }
}

TEST(StepSequencerGranularTest, ARestartBeginsThePatternOrGoesToItsPlaceInTheSong) {
    for (const StepLoop loop : {kForward, kBackward, kBackAndForth}) {
        Pattern pattern(loop, 6);
        const int32_t first = loop == kBackward ? 5 : 0;
        EXPECT_EQ(pattern.Next(1), Steps{first});
        pattern.Next(9);
        pattern.module.Restart();
        EXPECT_EQ(pattern.Next(1), Steps{first});
    }
    Pattern pattern(kForward, 16);
    pattern.Start(0.0);
    EXPECT_EQ(pattern.Next(4), (Steps{0, 1, 2, 3}));
    pattern.module.Restart();  // in the middle of step 3, whose tick does not count twice
    pattern.Block();
    EXPECT_EQ(pattern.Step(), 3);
    EXPECT_EQ(pattern.Next(3), (Steps{4, 5, 6}));
}

TEST(StepSequencerGranularTest, RandomStepsFollowTheXorshift) {
    const FixedClock clock(123456789);
    Pattern pattern(kRandom, 11);
    const Steps found = pattern.Next(300);
    EXPECT_EQ(found[0], 0);  // the placing of the first block leaves the step
    uint32_t x = 123456789;
    for (size_t i = 1; i < found.size(); ++i)
        ASSERT_EQ(found[i], static_cast<int32_t>(uint64_t{PlainDraw(x)} * 11 >> 32)) << i;
    pattern.SetSteps(3);
    for (const int32_t step : pattern.Next(50))
        EXPECT_LT(step, 3);
}

TEST(StepSequencerGranularTest, OutputIsTheValueOfTheStepFromItsTickOn) {
    Pattern pattern(kForward, 8);
    const std::array<float, 8> values{1.0f, 2.0f, 3.0f, 0.0f, 2.0f, 0.0f, 1.0f, 3.0f};
    for (uint32_t i = 0; i < 8; ++i) {
        // A silent step keeps the value that it would have.
        const float index = values[i] > 0.0f ? values[i] - 1.0f : 2.0f;
        pattern.Set(Seq::StepVal1 + i, index);
        pattern.Set(Seq::StepOnOff1 + i, values[i] > 0.0f ? 1.0f : 0.0f);
    }
    pattern.Blocks(2000);
    const std::vector<uint32_t> ticks = pattern.TickSteps();
    ASSERT_GE(ticks.size(), 20u);
    for (size_t k = 1; k < ticks.size(); ++k) {
        EXPECT_NEAR(ticks[k] - ticks[k - 1], 375, 1);
        for (uint32_t n = ticks[k - 1]; n < ticks[k]; ++n)
            ASSERT_EQ(pattern.outputs[0][n], values[(k - 1) % 8]) << n;
    }
}

TEST(StepSequencerGranularTest, EditsOfTheRunningStepAreHeardInTheSameBlock) {
    Pattern pattern(kForward, 16);
    pattern.Next(3);
    const auto heard = [&pattern](uint32_t id, float to) {
        pattern.Set(id + 2, to);
        pattern.Forget();
        pattern.Block();
        return pattern.outputs[0][0];
    };
    EXPECT_EQ(heard(Seq::StepVal1, 2.0f), 3.0f);
    EXPECT_EQ(heard(Seq::StepOnOff1, 0.0f), 0.0f);
    EXPECT_EQ(heard(Seq::StepVal1, 1.0f), 0.0f);
    EXPECT_EQ(heard(Seq::StepOnOff1, 1.0f), 2.0f);
}

TEST(StepSequencerGranularTest, RowsMoveLengthAndRate) {
    Pattern pattern(kForward, 16);
    pattern.Modulate(1, -0.75f);  // position 1 down to 0.25: the fifth of 16 lengths
    EXPECT_EQ(pattern.Next(7), (Steps{0, 1, 2, 3, 4, 0, 1}));
    const auto expectStepOf = [&pattern](int32_t samples) {
        pattern.Next(1);
        pattern.Forget();
        pattern.Blocks(400);
        const std::vector<uint32_t> ticks = pattern.TickSteps();
        ASSERT_GE(ticks.size(), 2u);
        EXPECT_NEAR(ticks[1] - ticks[0], samples, 1);
    };
    expectStepOf(375);
    pattern.Modulate(0, -0.125f);  // one entry of nine down the table: steps of twice the length
    pattern.Next(2);
    expectStepOf(750);
}

}  // namespace
}  // namespace Quorvan::dsp
