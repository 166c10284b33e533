#include "granular/StepSequencerGranular.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <set>
#include <vector>

#include "granular/GranularTables.h"
#include "primitives/Clock.h"

namespace Quorvan::dsp {
namespace {

using Seq = StepSequencerGranular;
using Steps = std::vector<int32_t>;

constexpr uint32_t kBlock = 4;  // shorter than a step, so that a block holds one tick at most
constexpr double kRate = 48000.0;
constexpr double kTempo = 120.0;
constexpr double kBeatsPerSample = kTempo / 60.0 / kRate;
constexpr double kStepsPerBeat = 64.0;  // of 1/256 notes: 375 samples each

enum Loop : int32_t { kForward, kBackward, kBackAndForth, kRandom };

struct Rig {
    explicit Rig(int32_t loop = kForward, uint32_t steps = 16) : seq("StepSequencerGranular") {
        seq.SetSyncedRates(kMainRates.data(), kMainRates.size());
        seq.SetParameterNormalized(Seq::MidiSync, 1.0f);
        seq.SetParameterValue(Seq::RateSynced, 8.0f);
        seq.SetParameterValue(Seq::LoopMode, static_cast<float>(loop));
        SetSteps(steps);
        for (uint32_t i = 0; i < Seq::kMaxSteps; ++i)
            seq.SetParameterValue(Seq::StepOnOff1 + i, 1.0f);
        seq.Setup(static_cast<float>(kRate), kBlock);
        for (auto& row : rows)
            row.fill(0.0f);
    }
    void SetSteps(uint32_t steps) {
        seq.SetParameterValue(Seq::NbSteps, static_cast<float>(steps));
    }
    /// Gives input 0 or 1 a content; that of the last block where amount is 0.
    void Modulate(uint32_t channel, float amount) {
        rows[channel].fill(amount);
        rows[channel][kRowHeadFloats - 1] = kRowActive;
    }
    void Start(double position) {
        song = position;
        playing = true;
    }
    /// One block; answers whether a step began in it.
    bool Block() {
        float* inputs[] = {rows[0].data() + kRowHeadFloats, rows[1].data() + kRowHeadFloats};
        float* outputs[] = {output.data()};
        ProcessBlock block;
        block.inputs = inputs;
        block.outputs = outputs;
        block.numInputs = 2;
        block.numOutputs = 1;
        block.numFrames = kBlock;
        block.tempo = static_cast<float>(kTempo);
        block.songPosition = static_cast<float>(song);
        block.transportPlaying = playing ? 1 : 0;
        EXPECT_TRUE(seq.Process(block));
        end = song + kBeatsPerSample * (kBlock - 1);
        if (playing)
            song += kBeatsPerSample * kBlock;
        return std::any_of(seq.TickBuffer(), seq.TickBuffer() + kBlock,
                           [](float tick) { return tick > 0.5f; });
    }
    int32_t Step() { return seq.Index(Seq::CurrentStep); }
    /// The steps that the next count ticks bring.
    Steps Next(size_t count) {
        Steps found;
        for (uint32_t limit = 0; found.size() < count && limit < 100000; ++limit)
            if (Block())
                found.push_back(Step());
        return found;
    }

    Seq seq;
    std::array<std::array<float, kRowHeadFloats + kBlock>, 2> rows;
    std::array<float, kBlock> output{};
    double song = 0.0;
    double end = 0.0;  ///< song position of the last sample run
    bool playing = false;
};

/// The step of a clock cycle in a pattern that has run since cycle 0.
int32_t Place(int32_t loop, int32_t cycle, int32_t steps) {
    const int32_t inPattern = cycle % steps;
    if (loop == kForward)
        return inPattern;
    if (loop == kBackward)
        return steps - 1 - inPattern;
    const bool down = cycle / steps % 2 == 1;
    return down ? steps - 1 - inPattern : inPattern;
}

// Forward, backward and back and forth are functions of the clock's cycle; a turn takes one tick
// without moving. Wherever the transport starts, the pattern is in its place from the first block.
TEST(StepSequencerGranularTest, StepsAreWhereTheSongPositionPutsThem) {
    for (const int32_t loop : {kForward, kBackward, kBackAndForth})
        for (const int32_t steps : {1, 2, 5, 16})
            for (const double from : {0.0, 3.305, 17.771, 1000.125}) {
                Rig rig(loop, static_cast<uint32_t>(steps));
                rig.Next(7);  // the clock has been running by itself
                rig.Start(from);
                for (uint32_t i = 0; i < 4000; ++i) {
                    rig.Block();
                    const double cycle = rig.end * kStepsPerBeat;
                    // Single precision places the tick within a few samples.
                    if (std::abs(cycle - std::round(cycle)) < 0.02)
                        continue;
                    ASSERT_EQ(rig.Step(), Place(loop, static_cast<int32_t>(cycle), steps))
                        << "loop " << loop << ", " << steps << " steps from " << from << " at "
                        << rig.end;
                }
            }
}

TEST(StepSequencerGranularTest, ARestartWithoutTransportBeginsThePattern) {
    for (const int32_t loop : {kForward, kBackward, kBackAndForth}) {
        Rig rig(loop, 6);
        const int32_t first = loop == kBackward ? 5 : 0;
        EXPECT_EQ(rig.Next(1), Steps{first});
        rig.Next(9);
        rig.seq.Restart();
        EXPECT_EQ(rig.Next(1), Steps{first});
    }
}

TEST(StepSequencerGranularTest, ALoopOfTheSongDoesNotTakeATickTwice) {
    Rig rig(kForward, 16);
    rig.Start(0.0);
    EXPECT_EQ(rig.Next(4), (Steps{0, 1, 2, 3}));
    rig.seq.Restart();  // in the middle of step 3: the song position puts it there again
    rig.Block();
    EXPECT_EQ(rig.Step(), 3);
    EXPECT_EQ(rig.Next(3), (Steps{4, 5, 6}));
}

TEST(StepSequencerGranularTest, AShorterPatternGoesOnFromItsLastStep) {
    const auto lowered = [](int32_t loop, size_t ticks) {
        Rig rig(loop, 8);
        EXPECT_EQ(rig.Next(ticks).back(), 6);
        rig.SetSteps(4);
        return rig.Next(6);
    };
    EXPECT_EQ(lowered(kForward, 7), (Steps{0, 1, 2, 3, 0, 1}));
    EXPECT_EQ(lowered(kBackward, 2), (Steps{2, 1, 0, 3, 2, 1}));
    EXPECT_EQ(lowered(kBackAndForth, 7), (Steps{3, 2, 1, 0, 0, 1}));   // going up
    EXPECT_EQ(lowered(kBackAndForth, 10), (Steps{2, 1, 0, 0, 1, 2}));  // going down
}

struct FixedClock : prims::ClockSource {
    uint64_t Microseconds() override { return 123456789; }
};

TEST(StepSequencerGranularTest, RandomStepsFollowTheXorshift) {
    FixedClock clock;
    prims::ClockSource* const before = prims::ReplaceClock(&clock);
    Rig rig(kRandom, 11);
    prims::ReplaceClock(before);
    const Steps found = rig.Next(300);
    EXPECT_EQ(found[0], 0);  // the placing of the first block leaves the step
    uint64_t x = 123456789;
    bool repeats = false;
    for (size_t i = 1; i < found.size(); ++i) {
        x = (x ^ (x << 13)) & 0xffffffff;
        x ^= x >> 17;
        x = (x ^ (x << 5)) & 0xffffffff;
        ASSERT_EQ(found[i], static_cast<int32_t>(x * 11 >> 32)) << i;
        repeats = repeats || found[i] == found[i - 1];
    }
    EXPECT_TRUE(repeats);
    EXPECT_EQ(std::set<int32_t>(found.begin(), found.end()).size(), 11u);
    rig.SetSteps(3);
    for (const int32_t step : rig.Next(50))
        EXPECT_LT(step, 3);
}

TEST(StepSequencerGranularTest, OutputIsTheValueOfTheStepFromItsTickOn) {
    Rig rig(kForward, 8);
    const std::array<float, 8> values{1.0f, 2.0f, 3.0f, 0.0f, 2.0f, 0.0f, 1.0f, 3.0f};
    for (uint32_t i = 0; i < 8; ++i) {
        // A silent step keeps the value that it would have.
        const float index = values[i] > 0.0f ? values[i] - 1.0f : 2.0f;
        rig.seq.SetParameterValue(Seq::StepVal1 + i, index);
        rig.seq.SetParameterValue(Seq::StepOnOff1 + i, values[i] > 0.0f ? 1.0f : 0.0f);
    }
    size_t step = 7;
    uint32_t length = 0;
    for (uint32_t i = 0; i < 2000; ++i) {
        rig.Block();
        for (uint32_t n = 0; n < kBlock; ++n) {
            ++length;
            if (rig.seq.TickBuffer()[n] > 0.5f) {
                if (i > 0) {
                    EXPECT_NEAR(length, 375, 1);
                }
                step = (step + 1) % 8;
                length = 0;
            }
            ASSERT_EQ(rig.output[n], values[step]) << "block " << i;
        }
    }
}

TEST(StepSequencerGranularTest, EditsOfTheRunningStepAreHeardInTheSameBlock) {
    Rig rig(kForward, 16);
    rig.Next(3);
    const uint32_t value = Seq::StepVal1 + 2;
    const uint32_t onOff = Seq::StepOnOff1 + 2;
    const auto heard = [&rig](uint32_t id, float to) {
        rig.seq.SetParameterValue(id, to);
        rig.Block();
        return rig.output[0];
    };
    EXPECT_EQ(heard(value, 2.0f), 3.0f);
    EXPECT_EQ(heard(onOff, 0.0f), 0.0f);
    EXPECT_EQ(heard(value, 1.0f), 0.0f);
    EXPECT_EQ(heard(onOff, 1.0f), 2.0f);
}

TEST(StepSequencerGranularTest, RowsMoveLengthAndRate) {
    Rig rig(kForward, 16);
    rig.Modulate(1, -0.75f);  // position 1 down to 0.25: the fifth of 16 lengths
    EXPECT_EQ(rig.Next(7), (Steps{0, 1, 2, 3, 4, 0, 1}));
    const auto blocksPerStep = [&rig] {
        rig.Next(1);
        uint32_t blocks = 1;
        while (!rig.Block())
            ++blocks;
        return blocks;
    };
    EXPECT_NEAR(blocksPerStep(), 94, 1);
    rig.Modulate(0, -0.125f);  // one entry of nine down the table: steps of twice the length
    rig.Next(2);
    EXPECT_NEAR(blocksPerStep(), 188, 1);
}

}  // namespace
}  // namespace Quorvan::dsp
