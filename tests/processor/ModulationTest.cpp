// What the matrix reaches, and when: destination rows, order of the sources, sequence, rate types.
#include <gtest/gtest.h>

#include <cmath>

#include "support/ProcessorRig.h"
#include "support/TestSignals.h"

namespace Quorvan::Processor {
namespace {

using test::Channel;
using test::ProcessorRig;
using test::Stereo;
using Settings = std::map<std::string, float>;

/// Position of a cell that gives an amount.
float AmountPosition(float amount) { return 0.5f + 0.5f * amount; }

void Route(ProcessorRig& rig, uint32_t source, uint32_t row, float amount) {
    rig.Set("Modulations_Dst" + std::to_string(row + 1) + "_Src" + std::to_string(source + 1) +
                "_Amount",
            AmountPosition(amount));
}

constexpr uint32_t kFollower = 0, kSequence = 4, kMacro = 5;
constexpr uint32_t kPitchRow = 6;
constexpr float kDepth = 0.25f;

/// A knob that a row moves, and what has to be set for it to be in force.
struct Row {
    uint32_t row;
    std::string knob;
    Settings settings;
    float from = 0.25f;
    bool glides = false;  ///< for longer than it is listened to
    Settings also = {};
};

Settings Both(Settings a, const Settings& b) {
    for (const auto& [name, position] : b)
        a[name] = position;
    return a;
}

std::string Grain(const std::string& name) { return "MoteWeaver_" + name; }

const Settings kMoving{{"Spatializer Enable", 1.0f},
                       {"Spatializer Trajectory", 0.7f},
                       {"Spatializer Amount", 1.0f},
                       {"Spatializer Distance", 0.8f}};
const Settings kTexture{{"MoteWeaver_GranularMode", 0.5f}, {"MoteWeaver_TextureDensity", 0.3f}};

/// A function that runs as a square wave and moves the pitch.
Settings Running(const std::string& function, uint32_t source) {
    return {{function + "_Mode", 1.0f},
            {function + "_PointX2", 0.5f},
            {function + "_PointY2", 1.0f},
            {function + "_RateUnSynced", 0.7f},
            {"Modulations_Dst7_Src" + std::to_string(source + 1) + "_Amount", 0.6f}};
}

std::vector<Row> GranularRows() {
    const Settings synced{{"Spatializer Rate Type", 0.3f}};
    const Settings sequence{{"StepSeq_NbSteps", 0.2f},      {"StepSeq_StepVal2", 1.0f},
                            {"StepSeq_StepVal4", 0.6f},     {"StepSeq_Scale", 1.0f},
                            {"StepSeq_RateUnSynced", 0.7f}, {"Modulations_Dst7_Src5_Amount", 0.6f}};
    const Settings beat{{Grain("GranularMode"), 1.0f},
                        {Grain("GranularPhaseHelper_RateSynced"), 0.5f},
                        {Grain("StepSequencerGranular_StepOnOff1"), 1.0f}};
    std::vector<Row> rows{
        {0, "Dry / Wet", {}},
        {1, "Feedback", {}, 0.6f},
        {2, "Granular Volume", {}, 0.5f},
        {3, "Spatializer Rate UnSynced", kMoving, 0.6f},
        {3, "Spatializer Rate Synced", Both(kMoving, synced), 0.5f},
        {4, "Spatializer Amount", kMoving},
        {5, "Spatializer Distance", kMoving},
        {6, Grain("Pitch"), {}},
        {6, Grain("Pitch"), {{Grain("Scale"), 0.4f}}},
        {7, Grain("RandomPitch"), {}},
        {8, Grain("ShapeParam"), {}},
        {9, Grain("GrainSizeAbsolute"), {}},
        {9, Grain("GrainSizeSynced"), {{Grain("GrainSizeMode"), 0.3f}}},
        {9, Grain("GrainSizeRatio"), {{Grain("DensitySizeLink"), 1.0f}}, 0.5f},
        {9, Grain("GrainSizeRatio"), beat, 0.5f},
        {9, Grain("TextureSizeAbsolute"), kTexture},
        {9, Grain("TextureSizeSynced"), Both(kTexture, {{Grain("TextureSizeMidiSync"), 1.0f}})},
        {10, Grain("RandomSize"), {{Grain("RandomSizeArrow"), 0.5f}}},
        {11, Grain("GranularPhaseHelper_RateUnSynced"), {}, 0.5f},
        {11, Grain("GranularPhaseHelper_RateSynced"), {{Grain("DensityType"), 0.3f}}, 0.5f},
        {12, Grain("TextureDensity"), kTexture},
        {13, Grain("RandomDensity"), {}},
        {14, Grain("RandomDirection"), {}},
        {15, Grain("RandomPan"), {{"Spatializer Enable", 1.0f}}},
        {16, Grain("Width"), {{Grain("RandomPitch"), 0.6f}}, 0.5f},
        {17, Grain("BufferPersistence"), {{Grain("BufferLengthSynced"), 0.0f}}},
        {18, Grain("BufferFreeze"), {}, 0.375f},
        {19, Grain("Speed"), {}, 0.5f},
        {19, Grain("Offset"), {{Grain("PlaybackMode"), 0.5f}}, 0.0625f},
        {19,
         Grain("OffsetSynced"),
         {{Grain("PlaybackMode"), 0.5f}, {Grain("OffsetType"), 0.3f}},
         0.5f},
        {19, Grain("ManualScanPosition"), {{Grain("PlaybackMode"), 1.0f}}, 0.0f},
        {20,
         Grain("GridSize"),
         {{Grain("PlaybackQuantizationMode"), 1.0f},
          {Grain("PlaybackMode"), 1.0f},
          {Grain("ManualScanPosition"), 0.2f}}},
        {21, Grain("Spray"), {}},
        {22, Grain("GrainTrigger"), {{Grain("TriggerMode"), 1.0f}}, 0.375f},
        {23, Grain("TransientSensitivity"), {{Grain("PlaybackQuantizationMode"), 0.5f}}, 0.0f},
        {24, Grain("RandomFine"), {}, 0.5f},
        {25, Grain("RandomLayers"), kTexture, 0.5f},
        {26, "Envelope Follower Gain", {{"Modulations_Dst7_Src1_Amount", 0.8f}}, 0.5f},
        {33, "StepSeq_RateUnSynced", sequence, 0.5f},
        {33, "StepSeq_RateSynced", Both(sequence, {{"StepSeq_RateType", 0.3f}}), 0.5f},
        {34, "StepSeq_Scale", sequence},
    };
    for (uint32_t k = 0; k < 3; ++k) {
        const std::string name = "Function" + std::to_string(k + 1);
        const Settings running = Running(name, k + 1);
        rows.push_back({27 + k, name + "_RateUnSynced", running, 0.5f});
        rows.push_back(
            {27 + k, name + "_RateSynced", Both(running, {{name + "_RateType", 0.3f}}), 0.5f});
        rows.push_back({30 + k, name + "_Scale", running, 0.625f});
    }
    return rows;
}

/// Rows of a slot, by their numbers in "FX1".
std::vector<Row> SlotRows(const std::string& slot) {
    const auto of = [&slot](uint32_t effect, Settings more = {}) {
        more["ModuleType"] = (static_cast<float>(effect) + 0.5f) / 10.0f;
        more.try_emplace("Dry / Wet", 0.6f);
        Settings named;
        for (const auto& [name, position] : more)
            named[slot + "_" + name] = position;
        return named;
    };
    const Settings comb{{"MultiModeFilter_Q", 0.8f}};
    const Settings delay{{"Delay_Feedback", 0.5f}, {"Delay_DelayTimeMs", 0.3f}};
    const Settings pingPong = Both(delay, {{"Delay_StereoMode", 1.0f}});
    const Settings octaver{{"OctaverDelay_Feedback", 0.2f},
                           {"OctaverDelay_DelayTimeMs", 0.1f},
                           {"OctaverDelay_PitchShift", 0.7f}};
    const Settings tape{{"TapeEcho_InputVolume", 0.7f},
                        {"TapeEcho_Intensity", 0.2f},
                        {"TapeEcho_DelayTimeFine", 0.5f},
                        {"TapeEcho_DelayTime", 0.2f}};
    const Settings swept{{"Flanger_DepthFlanger", 0.7f}, {"Flanger_MinDelay", 0.3f}};
    const Settings loud{
        {"Dry / Wet", 1.0f}, {"Compressor_OutputGain", 0.5f}, {"Compressor_Threshold", 0.2f}};
    std::vector<Row> rows{
        {35, "Dry / Wet", of(4, delay)},
        {36, "MultiModeFilter_Freq", of(1), 0.125f},
        {36, "MultiModeFilter_CombFreq", of(1, Both(comb, {{"MultiModeFilter_Mode", 0.7f}})), 0.5f},
        {36, "MultiModeFilter_CombFreq", of(1, Both(comb, {{"MultiModeFilter_Mode", 1.0f}})), 0.5f},
        {37, "MultiModeFilter_Q", of(1, {{"MultiModeFilter_Freq", 0.3f}})},
        {38, "MultiDist_Drive", of(2)},
        {39, "Compressor_Release", of(3, Both(loud, {{"Compressor_Ratio", 0.7f}}))},
        {40, "Compressor_Threshold", of(3, Both(loud, {{"Compressor_Ratio", 0.7f}}))},
        {41, "Compressor_Ratio", of(3, loud)},
        {42, "Delay_DelayTimeMs", of(4, delay)},
        {42, "Delay_DelayTimeSynced", of(4, Both(delay, {{"Delay_RateType", 0.3f}}))},
        {43, "Delay_Feedback", of(4, delay)},
        {44, "Delay_StereoWidth", of(4, delay)},
        {44, "Delay_StereoWidthPP", of(4, pingPong), 0.5f},
        {45, "Delay_DelayFineMs", of(4, delay), 0.625f},
        {46, "OctaverDelay_DelayTimeMs", of(5, octaver), 0.0f},
        {46, "OctaverDelay_DelayTimeSynced",
         of(5, Both(octaver, {{"OctaverDelay_DelayTimeType", 0.3f}}))},
        {47, "OctaverDelay_Feedback", of(5, octaver)},
        {48, "OctaverDelay_PitchShift", of(5, octaver)},
        {50, "OctaverDelay_DelayOffset", of(5, octaver), 0.5f},
        {51, "OctaverDelay_Detune", of(5, octaver), 0.5f},
        {52, "TapeEcho_DelayTime", of(6, tape), 0.25f, true},
        {52, "TapeEcho_DelayTimeSynced", of(6, Both(tape, {{"TapeEcho_DelayTimeType", 0.3f}})),
         0.25f, true},
        {53, "TapeEcho_DelayTimeFine", of(6, tape), 0.625f, true},
        {54, "TapeEcho_Intensity", of(6, tape)},
        {55, "TapeEcho_InputVolume", of(6, tape), 0.5f},
        {56, "TapeEcho_StereoWidth", of(6, tape), 0.25f, true},
        {56, "TapeEcho_StereoWidthPP", of(6, Both(tape, {{"TapeEcho_DelayType", 1.0f}})), 0.5f},
        {57, "Chorus_Freq", of(7, {{"Chorus_Depth", 0.7f}}), 0.5f},
        {58, "Chorus_Feedback", of(7, {{"Chorus_Depth", 0.7f}})},
        {59, "Flanger_Chorus_RateSynced", of(8, Both(swept, {{"Flanger_Chorus_RateType", 0.3f}})),
         0.5f},
        {60, "Flanger_Chorus_Feedback", of(8, swept)},
        {61, "Reverb_Decay", of(9), 0.5f},
        {62, "Reverb_E_Size", of(9), 0.25f, true},
        {63, "Reverb_Predelay", of(9, {{"Reverb_Decay", 0.7f}}), 0.25f, true},
        {64, "Reverb_Damping", of(9, {{"Reverb_Decay", 0.7f}})},
    };
    for (Row& row : rows) {
        row.knob = slot + "_" + row.knob;
        row.row += slot == "FX2" ? 30 : 0;
    }
    return rows;
}

/// How a row is listened to.
struct Place {
    float rate;
    Settings settings;
    Channel (*signal)(uint32_t seed, size_t length);
    float seconds, heardFrom;
};

Channel Hits(uint32_t seed, size_t length) { return test::Bursts(seed, length, 0.9f); }

/// Bursts, with their top taken off so that a part of a sample more or less doesn't matter.
Channel Rumble(uint32_t seed, size_t length) {
    Channel signal = test::Bursts(seed, length, 4.0f);
    for (int pass = 0; pass < 2; ++pass) {
        float state = 0.0f;
        for (float& sample : signal)
            sample = state += 0.05f * (sample - state);
    }
    return signal;
}

/// The sound with the knob at a position and the first macro, at 1, routed to the row. A preset
/// load ends ahead of it, so that no block is left in which the row wasn't there yet.
Stereo Sound(const Place& place, const Row& row, float knob, float amount) {
    ProcessorRig rig(place.rate);
    rig.MakeAudible()
        .Set(place.settings)
        .Set(row.settings)
        .Set(row.knob, knob)
        .Set("Macro 1", 1.0f);
    Route(rig, kMacro, row.row, amount);
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
void ExpectTheRowTurnsTheKnob(const Row& row, const Place& place) {
    const auto sound = [&](float knob, float amount) { return Sound(place, row, knob, amount); };
    const auto from = static_cast<size_t>(place.heardFrom * place.rate);
    const Stereo turned = sound(row.from + kDepth, 0.0f);
    const Stereo moved = sound(row.from, kDepth);
    const Stereo left = sound(row.from, 0.0f);
    const double reach = Distance(turned, left, from);
    EXPECT_GT(reach, 3e-4) << row.row << " " << row.knob;
    EXPECT_GT(Distance(moved, left, from), 0.2 * reach) << row.row << " " << row.knob;
    if (!row.glides) {
        EXPECT_LT(Distance(turned, moved, from), 0.05 * reach) << row.row << " " << row.knob;
    }
}

TEST(ModulationTest, AMacroOnARowSoundsLikeItsKnobTurned) {
    // At half speed the play head falls behind the write head: any pitch finds something to read.
    const Place place{24000.0f, {{Grain("Speed"), 0.625f}}, Hits, 0.6f, 0.0f};
    for (const Row& row : GranularRows())
        ExpectTheRowTurnsTheKnob(row, place);
}

TEST(ModulationTest, AMacroOnARowOfASlotSoundsLikeItsKnobTurned) {
    // Heard late: delay times glide there from where the knob stands.
    const Place place{
        48000.0f, {{"Dry / Wet", 0.0f}, {Grain("MaxGrains"), 0.0f}}, Rumble, 0.8f, 0.7f};
    for (const Row& row : SlotRows("FX1"))
        ExpectTheRowTurnsTheKnob(row, place);
    for (const Row& row : SlotRows("FX2"))
        if (row.row % 3 == 0)
            ExpectTheRowTurnsTheKnob(row, place);
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
        rig.Set({{"Function3_Scale", 0.0f},
                 {"StepSeq_StepVal1", 1.0f},
                 {"Envelope Follower Gain", 0.5f}});
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
    rig.Set({{"StepSeq_StepVal1", 0.75f}, {"StepSeq_Scale", 1.0f}, {"GUI Visible", 1.0f}});
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

TEST(ModulationTest, ASyncedFunctionIsLockedToTheSongWhereverPlaybackStarts) {
    constexpr uint32_t kFunction = 1, kBlocks = 32, kSlice = 4;
    ProcessorRig rig(24000.0f);
    rig.Set({{"GUI Visible", 1.0f},
             {"Function1_Mode", 1.0f},               // free
             {"Function1_RateType", 0.375f},         // straight
             {"Function1_RateSynced", 5.5f / 9.0f},  // quarter notes
             {"Function1_PointX2", 0.5f},            // a triangle from 0 to 1
             {"Function1_PointY2", 1.0f},
             {"Function1_Tension1", 0.5f},
             {"Function1_Tension2", 0.5f},
             {"MoteWeaver_Pitch", 0.25f}});
    Route(rig, kFunction, kPitchRow, 0.5f);
    rig.EndPresetLoad();
    rig.RunSilence(kBlocks - 1);  // to the start of a chunk
    for (const double start : {0.0, 0.3, 7.77, 1000.125, 12.5}) {
        rig.TakeBlobChanges();
        rig.songPosition = start;
        rig.playing = true;
        std::vector<double> beats;
        const Channel zeros(kBlocks * rig.blockSize, 0.0f);
        rig.Run({zeros, zeros}, [&] { beats.push_back(rig.songPosition); });
        rig.playing = false;
        const uint8_t* chunk = nullptr;
        for (const BlobChange& change : rig.TakeBlobChanges())
            if (change.index == ProcessorRig::IndexOf("Feedback_BigChunk"))
                chunk = static_cast<const uint8_t*>(change.data);
        ASSERT_NE(chunk, nullptr);
        for (uint32_t slice = 0; slice < kBlocks / kSlice; ++slice) {
            const double phase = std::fmod(beats[slice * kSlice], 1.0);
            const double height = 1.0 - std::abs(2.0 * phase - 1.0);
            // A step of the bytes, and what single precision leaves of the position.
            EXPECT_NEAR(chunk[kFunction * 8 + slice], 127.5 * (height + 1.0), 1.5) << start;
            EXPECT_NEAR(chunk[(7 + kPitchRow) * 8 + slice], 255.0 * (0.25 + 0.5 * height), 1.5)
                << start;
        }
        rig.RunSilence(kBlocks);
    }
}

TEST(ModulationTest, OneStepABlockIsHeldOverTheBlock) {
    const auto render = [](float controlRate) {
        ProcessorRig rig(24000.0f);
        ShowScale(rig);
        rig.MakeAudible().Set({{"StepSeq_StepVal1", 0.75f},
                               {"StepSeq_Bipolar", 1.0f},
                               {"StepSeq_Scale", 0.5f},
                               {"Function3_Scale", 0.75f},
                               {"StepSeq_ControlRate", controlRate},
                               {"Function3_ControlRate", controlRate}});
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
