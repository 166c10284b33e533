// What the matrix reaches, and when: destination rows, order of the sources, sequence, rate types.
#include <gtest/gtest.h>

#include <cmath>

#include "support/DestinationRows.h"

namespace Quorvan::Processor {
namespace {

using namespace test;

constexpr uint32_t kFollower = 0, kSequence = 4, kMacro = 5;
constexpr uint32_t kPitchRow = 6;
constexpr float kDepth = 0.25f;

constexpr const char* kMovingSources =
    "Macro 1=1;Macro 2=1;Envelope Follower Gain=0.9;StepSeq_Scale=1;"
    "StepSeq_NbSteps=0.2;StepSeq_StepVal1=0.5;StepSeq_StepVal2=1;StepSeq_StepVal4=0.6;"
    "StepSeq_RateUnSynced=0.7;"
    "Function1_Mode=1;Function1_PointX2=0.5;Function1_PointY2=1;Function1_RateUnSynced=0.8;"
    "Function2_Mode=1;Function2_PointX2=0.5;Function2_PointY2=1;Function2_RateUnSynced=0.8;"
    "Function3_Mode=1;Function3_PointX2=0.5;Function3_PointY2=1;Function3_RateUnSynced=0.8";

/// How a row is listened to.
struct Place {
    float rate;
    const char* settings;
    Channel (*signal)(uint32_t seed, size_t length);
    float seconds, heardFrom;
};

Channel Hits(uint32_t seed, size_t length) { return Bursts(seed, length, 0.9f); }

/// Bursts, with their top taken off so that a part of a sample more or less doesn't matter.
Channel Rumble(uint32_t seed, size_t length) {
    Channel signal = Bursts(seed, length, 4.0f);
    for (int pass = 0; pass < 2; ++pass) {
        float state = 0.0f;
        for (float& sample : signal)
            sample = state += 0.05f * (sample - state);
    }
    return signal;
}

/// The sound with the knob at a position and a source routed to the row. All seven move, the macros
/// stand at 1. A preset load ends ahead of it, so that no block is left in which the row wasn't
/// there yet.
Stereo Sound(const Place& place, const DestinationRow& row, float knob, float amount,
             uint32_t source = kMacro) {
    ProcessorRig rig(place.rate);
    rig.MakeAudible().SetAll(place.settings).SetAll(kMovingSources);
    row.Apply(rig, knob);
    Route(rig, source, row.row, amount);
    rig.RunSilence(2);
    rig.EndPresetLoad();
    const auto length = static_cast<size_t>(place.seconds * place.rate);
    return rig.Run({place.signal(1, length), place.signal(7, length)});
}

/// Power of the difference from a sample on, against that of a.
double Distance(const Stereo& a, const Stereo& b, size_t from) {
    double power = 1e-12, apart = 0.0;
    for (size_t c = 0; c < 2; ++c)
        for (size_t i = from; i < a[c].size(); ++i) {
            const double difference = static_cast<double>(a[c][i]) - static_cast<double>(b[c][i]);
            power += static_cast<double>(a[c][i]) * static_cast<double>(a[c][i]);
            apart += difference * difference;
        }
    return apart / power;
}

/// A knob that a row moves sounds like the knob turned, up to what two forms of one curve differ
/// by.
void ExpectTheRowTurnsTheKnob(const DestinationRow& row, const Place& place) {
    SCOPED_TRACE(std::to_string(row.row) + " " + row.knob);
    const auto from = static_cast<size_t>(place.heardFrom * place.rate);
    const Stereo turned = Sound(place, row, row.from + kDepth, 0.0f);
    const Stereo moved = Sound(place, row, row.from, kDepth);
    const Stereo left = Sound(place, row, row.from, 0.0f);
    const double reach = Distance(turned, left, from);
    EXPECT_GT(reach, 3e-4);
    EXPECT_GT(Distance(moved, left, from), 0.2 * reach);
    if (!row.strays) {
        EXPECT_LT(Distance(turned, moved, from), 0.05 * reach);
    }
}

void ExpectSourceIsHeard(uint32_t source, const DestinationRow& row, const Place& place,
                         const Stereo& without) {
    SCOPED_TRACE("source " + std::to_string(source) + " on " + std::to_string(row.row) + " " +
                 row.knob);
    const auto from = static_cast<size_t>(place.heardFrom * place.rate);
    constexpr float kDeep = 0.6f;  // a source may take a while to its top, and rows have steps
    EXPECT_GT(Distance(Sound(place, row, row.from, kDeep, source), without, from), 1e-5);
}

// At half speed the play head falls behind the write head: any pitch finds something to read.
const Place kCloud{24000.0f, "MoteWeaver_Speed=0.625", Hits, 0.6f, 0.0f};
// Heard late: delay times glide there from where the knob stands.
const Place kSlots{48000.0f, "Dry / Wet=0;MoteWeaver_MaxGrains=0", Rumble, 0.8f, 0.7f};

TEST(ModulationTest, AMacroOnARowSoundsLikeItsKnobTurned) {
    for (const DestinationRow& row : GranularRows())
        ExpectTheRowTurnsTheKnob(row, kCloud);
}

TEST(ModulationTest, EverySourceIsHeardOnEveryRow) {
    for (const DestinationRow& row : GranularRows()) {
        const Stereo without = Sound(kCloud, row, row.from, 0.0f);
        for (uint32_t source = 0; source < 7; ++source)
            ExpectSourceIsHeard(source, row, kCloud, without);
    }
    // In turn, since a row of a slot takes longer to be heard.
    uint32_t source = 0;
    for (const char* const slot : {"FX1", "FX2"})
        for (const DestinationRow& row : SlotRows(slot))
            ExpectSourceIsHeard(source++ % 7, row, kSlots, Sound(kSlots, row, row.from, 0.0f));
}

TEST(ModulationTest, AMacroOnARowOfASlotSoundsLikeItsKnobTurned) {
    for (const char* const slot : {"FX1", "FX2"})
        for (const DestinationRow& row : SlotRows(slot))
            ExpectTheRowTurnsTheKnob(row, kSlots);
}

/// Output of the first function after the block, of a flat curve at its top: half its scale above
/// 0.5.
float ScaleInForce(ProcessorRig& rig) { return 4.0f * rig.Get("Function1_OutputValue") - 3.0f; }

/// A rig whose first function shows what its "Scale" is, at 0 without modulation.
void ShowScale(ProcessorRig& rig) {
    for (const char* const function : {"Function1", "Function3"})
        for (int k = 1; k <= 3; ++k)
            rig.Set(function + ("_PointY" + std::to_string(k)), 1.0f);
    rig.Set("Function1_Scale", 0.5f);
}

TEST(ModulationTest, ASourceIsHeardInItsBlockByWhatRunsBehindIt) {
    constexpr uint32_t kScaleRow = 30;
    struct Step {
        const char* name;
        uint32_t source;
        std::function<void(ProcessorRig&)> raise;
        bool atOnce;
    };
    const std::vector<Step> steps{
        {"follower", kFollower, [](ProcessorRig&) {}, true},
        {"later function", 3, [](ProcessorRig& rig) { rig.Set("Function3_Scale", 1.0f); }, false},
        {"sequence", kSequence, [](ProcessorRig& rig) { rig.Set("StepSeq_Scale", 1.0f); }, false},
        {"macro", kMacro, [](ProcessorRig& rig) { rig.Set("Macro 1", 1.0f); }, false}};
    for (const Step& step : steps) {
        ProcessorRig rig(24000.0f);
        ShowScale(rig);
        rig.SetAll("Function3_Scale=0;StepSeq_StepVal1=1;Envelope Follower Gain=0.5");
        Route(rig, step.source, kScaleRow, 0.5f);
        rig.RunSilence(4);
        EXPECT_NEAR(ScaleInForce(rig), 0.0f, 1e-5f) << step.name;
        step.raise(rig);
        const Channel loud(rig.blockSize, step.source == kFollower ? 1.0f : 0.0f);
        rig.Run({loud, loud});
        EXPECT_NEAR(ScaleInForce(rig), step.atOnce ? 1.0f : 0.0f, 1e-5f) << step.name;
        rig.Run({loud, loud});
        EXPECT_NEAR(ScaleInForce(rig), 1.0f, 1e-5f) << step.name;
    }
}

/// First sample of a source row, as the feedback shows it.
int SourceByte(ProcessorRig& rig, uint32_t source) {
    rig.RunSilence(64);
    for (const BlobChange& change : rig.TakeBlobChanges())
        if (change.index == ProcessorRig::IndexOf("Feedback_BigChunk"))
            return static_cast<const uint8_t*>(change.data)[source * 8 + 7];
    return -1;
}

TEST(ModulationTest, TheSequenceIsMadeBipolarAndThenScaled) {
    ProcessorRig rig(24000.0f);
    rig.SetAll("StepSeq_StepVal1=0.75;StepSeq_Scale=1;GUI Visible=1");
    rig.EndPresetLoad();
    const auto byteOf = [](float x) { return static_cast<int>((x + 1.0f) * 127.5f); };
    EXPECT_EQ(SourceByte(rig, kSequence), byteOf(0.75f));
    rig.Set("StepSeq_Bipolar", 0.5f);  // at the middle it is off still
    EXPECT_EQ(SourceByte(rig, kSequence), byteOf(0.75f));
    rig.Set("StepSeq_Bipolar", 0.6f);
    EXPECT_EQ(SourceByte(rig, kSequence), byteOf(0.5f));
    rig.Set("StepSeq_Scale", 0.5f);
    EXPECT_EQ(SourceByte(rig, kSequence), byteOf(0.25f));
    Route(rig, kMacro, 34, 1.0f);  // and modulated no further than to 1
    rig.Set("Macro 1", 0.75f);
    EXPECT_EQ(SourceByte(rig, kSequence), byteOf(0.5f));
}

TEST(ModulationTest, OneStepABlockIsHeldOverTheBlock) {
    const auto render = [](float controlRate) {
        ProcessorRig rig(24000.0f);
        ShowScale(rig);
        rig.MakeAudible()
            .SetAll(
                "StepSeq_StepVal1=0.75;StepSeq_Bipolar=1;StepSeq_Scale=0.5;Function3_Scale=0.75")
            .Set("StepSeq_ControlRate", controlRate)
            .Set("Function3_ControlRate", controlRate);
        Route(rig, kSequence, kPitchRow, 0.3f);
        Route(rig, 3, 2, -0.5f);
        return rig.Run({Hits(1, 12000), Hits(7, 12000)});
    };
    EXPECT_EQ(render(0.0f), render(1.0f));
}

TEST(ModulationTest, RateTypesSetTheSyncOfTheirGenerators) {
    ProcessorRig rig(24000.0f);
    for (const std::string name : {"Function1", "Function2", "Function3", "StepSeq"})
        for (int type : {3, 2, 1, 0}) {
            rig.Set(name + "_RateType", (static_cast<float>(type) + 0.5f) / 4.0f);
            rig.RunSilence(1);
            EXPECT_EQ(rig.Get(name + "_MidiSync"), type != 0 ? 1.0f : 0.0f) << name << type;
            EXPECT_EQ(rig.Get(name + "_RateSyncedType"),
                      type != 0 ? static_cast<float>(type - 1) / 2.0f : 0.0f)
                << name << type;
        }
}

}  // namespace
}  // namespace Quorvan::Processor
