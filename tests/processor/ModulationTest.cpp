// What the matrix reaches, and when: destination rows, order of the sources, sequence, rate types.
#include "support/DestinationRows.h"
#include "support/Test.h"

namespace Quorvan::Processor {
namespace {

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

struct Place {
    float rate;
    const char* settings;
    Channel (*signal)(uint32_t seed, size_t length);
    float seconds, heardFrom;
};

Channel Hits(uint32_t seed, size_t length) { return Bursts(seed, length, 0.9f); }

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
            power += double{a[c][i]} * a[c][i];
            apart += std::pow(double{a[c][i]} - b[c][i], 2.0);
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

// At half speed the play head falls behind the write head: any pitch finds something to read.
const Place kCloud{24000.0f, "MoteWeaver_Speed=0.625", Hits, 0.6f, 0.0f};
// Heard late: delay times glide there from where the knob stands.
const Place kSlots{48000.0f, "Dry / Wet=0;MoteWeaver_MaxGrains=0", Rumble, 0.8f, 0.7f};

TEST(ModulationTest, AMacroOnARowSoundsLikeItsKnobTurned) {
    for (const DestinationRow& row : GranularRows())
        ExpectTheRowTurnsTheKnob(row, kCloud);
    for (const char* const slot : {"FX1", "FX2"})
        for (const DestinationRow& row : SlotRows(slot))
            ExpectTheRowTurnsTheKnob(row, kSlots);
}

TEST(ModulationTest, EverySourceIsHeardOnEveryRow) {
    const auto expectHeard = [](uint32_t source, const DestinationRow& row, const Place& place,
                                const Stereo& without) {
        constexpr float kDeep = 0.6f;  // a source may take a while to its top, and rows have steps
        const auto from = static_cast<size_t>(place.heardFrom * place.rate);
        EXPECT_GT(Distance(Sound(place, row, row.from, kDeep, source), without, from), 1e-5)
            << "source " << source << " on " << row.row << " " << row.knob;
    };
    for (const DestinationRow& row : GranularRows()) {
        const Stereo without = Sound(kCloud, row, row.from, 0.0f);
        for (uint32_t source = 0; source < 7; ++source)
            expectHeard(source, row, kCloud, without);
    }
    // In turn, since a row of a slot takes longer to be heard.
    uint32_t source = 0;
    for (const char* const slot : {"FX1", "FX2"})
        for (const DestinationRow& row : SlotRows(slot))
            expectHeard(source++ % 7, row, kSlots, Sound(kSlots, row, row.from, 0.0f));
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
    // The follower is loud by itself, the others by a parameter at its top.
    const std::map<uint32_t, const char*> raisedBy{{kFollower, ""},
                                                   {3, "Function3_Scale=1"},
                                                   {kSequence, "StepSeq_Scale=1"},
                                                   {kMacro, "Macro 1=1"}};
    for (const auto& [source, raised] : raisedBy) {
        ProcessorRig rig(24000.0f);
        ShowScale(rig);
        rig.SetAll("Function3_Scale=0;StepSeq_StepVal1=1;Envelope Follower Gain=0.5");
        Route(rig, source, kScaleRow, 0.5f);
        rig.RunSilence(4);
        EXPECT_NEAR(ScaleInForce(rig), 0.0f, 1e-5f) << source;
        const float level = source == kFollower ? 1.0f : 0.0f;
        const Channel loud(rig.SetAll(raised).blockSize, level);
        for (const float wanted : {level, 1.0f}) {
            rig.Run({loud, loud});
            EXPECT_NEAR(ScaleInForce(rig), wanted, 1e-5f) << source;
        }
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
    Route(rig, kMacro, 34, 1.0f);
    for (const auto& [setting, wanted] :
         {std::pair("", 0.75f),
          {"StepSeq_Bipolar=0.5", 0.75f},  // at the middle it is off still
          {"StepSeq_Bipolar=0.6", 0.5f},
          {"StepSeq_Scale=0.5", 0.25f},
          {"Macro 1=0.75", 0.5f}}) {  // modulated no further than to 1
        rig.SetAll(setting);
        EXPECT_EQ(SourceByte(rig, kSequence), static_cast<int>((wanted + 1.0f) * 127.5f));
    }
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
    for (const std::string name : {"Function1", "Function2", "Function3", "StepSeq", "FX1_Delay",
                                   "FX2_Flanger_Chorus", "FX1_OctaverDelay"})
        for (int type : {3, 2, 1, 0}) {
            rig.Set(name + (name.ends_with("rDelay") ? "_DelayTimeType" : "_RateType"),
                    (static_cast<float>(type) + 0.5f) / 4.0f);
            rig.RunSilence(1);
            EXPECT_EQ(rig.Get(name + "_MidiSync"), type != 0 ? 1.0f : 0.0f) << name << type;
            EXPECT_EQ(rig.Get(name + "_RateSyncedType"),
                      type != 0 ? static_cast<float>(type - 1) / 2.0f : 0.0f)
                << name << type;
        }
}

}  // namespace
}  // namespace Quorvan::Processor
