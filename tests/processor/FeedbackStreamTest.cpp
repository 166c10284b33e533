// What a user interface is sent: chunks, positions and flags, and when.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <set>

#include "support/ProcessorRig.h"

namespace Quorvan::Processor {
namespace {

using test::ProcessorRig;

constexpr uint32_t kBigChunk = 3047, kFXChunk = 3048, kFirstFlag = 3055;
constexpr uint32_t kSources = 7, kDestinations = 95, kSlices = 8;
using Changes = std::vector<ParameterChange>;

/// A rig that streams, its counter at the start of a chunk.
class StreamRig : public ProcessorRig {
public:
    StreamRig() : ProcessorRig(24000.0f) {
        Set("GUI Visible", 1.0f);
        EndPresetLoad();
        RunSilence(31);  // its one block of the load has counted
        TakeBlobChanges();
        TakeParameterChanges();
    }
    /// Runs one chunk's blocks and keeps what it brought.
    void RunChunk() {
        RunSilence(32);
        for (const BlobChange& change : TakeBlobChanges()) {
            if (change.index == kBigChunk)
                std::memcpy(bytes, change.data, sizeof(bytes));
            else if (change.index == kFXChunk)
                std::memcpy(floats, change.data, sizeof(floats));
        }
    }
    int Destination(uint32_t row, uint32_t slice = 7) const {
        return bytes[(kSources + row) * kSlices + slice];
    }

    uint8_t bytes[816] = {};
    float floats[60] = {};
};

std::string CellName(uint32_t row, uint32_t source) {
    return "Modulations_Dst" + std::to_string(row + 1) + "_Src" + std::to_string(source + 1) +
           "_Amount";
}

TEST(FeedbackStreamTest, OneChunkOfEachKindComesInThirtyTwoBlocksFromThreeBuffersInTurn) {
    StreamRig rig;
    std::vector<const void*> big, fx;
    for (size_t k = 0; k < 8; ++k) {
        for (int block = 0; block < 32; ++block) {
            const uint8_t* filling = nullptr;
            uint8_t copy[816];
            uint32_t room = sizeof(copy);
            EXPECT_TRUE(rig.processor->GetParameterBlob(kBigChunk, copy, &room));
            rig.RunSilence(1);
            const auto changes = rig.TakeBlobChanges();
            ASSERT_EQ(changes.size(), block == 31 ? 2u : 0u) << k << " " << block;
            if (block < 31)
                continue;
            EXPECT_EQ(changes[0].index, kBigChunk);
            EXPECT_EQ(changes[0].size, 816u);
            EXPECT_EQ(changes[1].index, kFXChunk);
            EXPECT_EQ(changes[1].size, 240u);
            big.push_back(changes[0].data);
            fx.push_back(changes[1].data);
            // What could be asked for until now was the chunk that has just gone out.
            filling = static_cast<const uint8_t*>(changes[0].data);
            EXPECT_EQ(std::memcmp(filling, copy, sizeof(copy)), 0);
        }
        EXPECT_EQ(big[k], big[k % 3]);
        EXPECT_EQ(fx[k], fx[k % 3]);
    }
    EXPECT_EQ(std::set<const void*>(big.begin(), big.end()).size(), 3u);
    EXPECT_EQ(std::set<const void*>(fx.begin(), fx.end()).size(), 3u);
}

TEST(FeedbackStreamTest, ASliceIsTakenInEveryFourthBlock) {
    StreamRig rig;
    const auto byteAt = [](uint32_t block) { return static_cast<float>(block) / 32.0f; };
    for (uint32_t block = 0; block < 32; ++block) {
        rig.Set("Macro 1", byteAt(block));
        if (block == 31)
            break;
        rig.RunSilence(1);
    }
    rig.RunChunk();  // one block of the chunk was left; the rest begins the next one
    for (uint32_t slice = 0; slice < kSlices; ++slice)
        EXPECT_EQ(rig.bytes[5 * kSlices + slice],
                  static_cast<int>((byteAt(4 * slice) + 1.0f) * 127.5f));
}

TEST(FeedbackStreamTest, TheFirstChunkIsWellFormedBeforeAnyBlock) {
    ProcessorRig rig(24000.0f);
    uint8_t bytes[816];
    uint32_t room = sizeof(bytes);
    ASSERT_TRUE(rig.processor->GetParameterBlob(kBigChunk, bytes, &room));
    for (uint32_t i = 0; i < kSources * kSlices; ++i)
        EXPECT_EQ(bytes[i], 127);
    for (uint32_t slice = 0; slice < kSlices; ++slice) {
        EXPECT_EQ(bytes[(kSources + 6) * kSlices + slice], 0);     // "Pitch" at the bottom
        EXPECT_EQ(bytes[(kSources + 7) * kSlices + slice], 127);   // no random pitch
        EXPECT_EQ(bytes[(kSources + 30) * kSlices + slice], 255);  // the function's full scale
    }
}

TEST(FeedbackStreamTest, OnlyAVisibleOnlineLoadedProcessorSends) {
    StreamRig rig;
    const auto sends = [&rig] {
        rig.RunSilence(32);
        return !rig.TakeBlobChanges().empty();
    };
    EXPECT_TRUE(sends());
    rig.offline = true;
    EXPECT_FALSE(sends());
    rig.offline = false;
    EXPECT_TRUE(sends());
    rig.Set("GUI Visible", 0.5f);  // a step above 0.5 is needed
    EXPECT_FALSE(sends());
    rig.Set("GUI Visible", 1.0f).Set("PresetLoading", 1.0f);
    EXPECT_FALSE(sends());
    rig.Set("PresetLoading", 0.0f);
    EXPECT_TRUE(sends());

    // The counter runs on behind the gate: a late opening shortens the first chunk.
    rig.Set("GUI Visible", 0.0f).RunSilence(10);
    rig.Set("GUI Visible", 1.0f).RunSilence(21);
    EXPECT_TRUE(rig.TakeBlobChanges().empty());
    rig.RunSilence(1);
    EXPECT_EQ(rig.TakeBlobChanges().size(), 2u);

    // A bypass at rest stops it.
    rig.RunSilence(7);
    rig.Set("Bypass", 1.0f).RunSilence(320);
    rig.TakeBlobChanges();
    rig.RunSilence(64);
    EXPECT_TRUE(rig.TakeBlobChanges().empty());
}

TEST(FeedbackStreamTest, PositionsAreToldWhereTheyHaveMoved) {
    StreamRig rig;
    rig.RunChunk();
    EXPECT_TRUE(rig.TakeParameterChanges().empty());
    rig.Set({{"MoteWeaver_RandomDirection", 0.25f},
             {"MoteWeaver_ShapeParam", 0.375f},
             {"MoteWeaver_Pitch", 0.5f},
             {"MoteWeaver_GrainSizeAbsolute", 0.75f},
             {"MoteWeaver_GranularMode", 0.5f},
             {"MoteWeaver_TextureSizeAbsolute", 0.625f}});
    rig.RunChunk();
    const Changes changes = rig.TakeParameterChanges();
    const std::vector<std::pair<const char*, float>> expected{{"Direction_Feedback", 0.25f},
                                                              {"Shape_Feedback", 0.375f},
                                                              {"Pitch_Feedback", 0.5f},
                                                              {"Size_Feedback", 0.625f}};
    ASSERT_EQ(changes.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(changes[i].index, ProcessorRig::IndexOf(expected[i].first));
        EXPECT_EQ(changes[i].value, expected[i].second);
        EXPECT_EQ(rig.Get(expected[i].first), expected[i].second);
    }
    rig.RunChunk();
    EXPECT_TRUE(rig.TakeParameterChanges().empty());
}

TEST(FeedbackStreamTest, FlagsFollowTheRoutingAndAFullListDropsTheRest) {
    StreamRig rig;
    rig.Set(CellName(6, 0), 0.75f).Set(CellName(94, 3), 0.25f);
    rig.RunChunk();
    Changes changes = rig.TakeParameterChanges();
    ASSERT_EQ(changes.size(), 2u);
    EXPECT_EQ(changes[0].index, kFirstFlag + 6);
    EXPECT_EQ(changes[0].value, 1.0f);
    EXPECT_EQ(changes[1].index, kFirstFlag + 94);
    rig.Set("Modulations_Dst7_Src1_Activated", 0.0f).Set(CellName(94, 3), 0.5f);
    rig.RunChunk();
    changes = rig.TakeParameterChanges();
    ASSERT_EQ(changes.size(), 2u);
    EXPECT_EQ(changes[0].value, 0.0f);

    for (uint32_t row = 0; row < kDestinations; ++row)
        rig.Set(CellName(row, 6), 0.75f);  // of a macro at 0: nothing moves
    rig.RunChunk();
    changes = rig.TakeParameterChanges();
    ASSERT_EQ(changes.size(), 64u);
    for (uint32_t row = 0; row < kDestinations; ++row) {
        if (row < 64) {
            EXPECT_EQ(changes[row].index, kFirstFlag + row);
        }
        EXPECT_EQ(rig.GetAt(kFirstFlag + row), 1.0f);
    }
    rig.RunChunk();
    EXPECT_TRUE(rig.TakeParameterChanges().empty());  // what was dropped stays untold
}

/// Parameters of the rows, as the modes of all modules stand behind construction.
std::vector<std::string> PlainTargets() {
    const std::vector<std::string> grain{"Pitch",           "RandomPitch",
                                         "ShapeParam",      "GrainSizeAbsolute",
                                         "RandomSize",      "GranularPhaseHelper_RateUnSynced",
                                         "TextureDensity",  "RandomDensity",
                                         "RandomDirection", "RandomPan",
                                         "Width",           "BufferPersistence",
                                         "BufferFreeze",    "Speed",
                                         "GridSize",        "Spray",
                                         "GrainTrigger",    "TransientSensitivity",
                                         "RandomFine",      "RandomLayers"};
    std::vector<std::string> names{"Dry / Wet",          "Feedback",
                                   "Granular Volume",    "Spatializer Rate UnSynced",
                                   "Spatializer Amount", "Spatializer Distance"};
    for (const std::string& name : grain)
        names.push_back("MoteWeaver_" + name);
    names.push_back("Envelope Follower Gain");
    for (const char* const name : {"RateUnSynced", "Scale"})
        for (const char* const function : {"Function1_", "Function2_", "Function3_"})
            names.push_back(std::string(function) + name);
    names.insert(names.end(), {"StepSeq_RateUnSynced", "StepSeq_Scale"});
    const std::vector<std::string> slot{"Dry / Wet",
                                        "MultiModeFilter_Freq",
                                        "MultiModeFilter_Q",
                                        "MultiDist_Drive",
                                        "Compressor_Release",
                                        "Compressor_Threshold",
                                        "Compressor_Ratio",
                                        "Delay_DelayTimeMs",
                                        "Delay_Feedback",
                                        "Delay_StereoWidth",
                                        "Delay_DelayFineMs",
                                        "OctaverDelay_DelayTimeMs",
                                        "OctaverDelay_Feedback",
                                        "OctaverDelay_PitchShift",
                                        "OctaverDelay_Spray",
                                        "OctaverDelay_DelayOffset",
                                        "OctaverDelay_Detune",
                                        "TapeEcho_DelayTime",
                                        "TapeEcho_DelayTimeFine",
                                        "TapeEcho_Intensity",
                                        "TapeEcho_InputVolume",
                                        "TapeEcho_StereoWidth",
                                        "Chorus_Freq",
                                        "Chorus_Feedback",
                                        "Flanger_Chorus_Freq",
                                        "Flanger_Chorus_Feedback",
                                        "Reverb_Decay",
                                        "Reverb_E_Size",
                                        "Reverb_Predelay",
                                        "Reverb_Damping"};
    for (const char* const prefix : {"FX1_", "FX2_"})
        for (const std::string& name : slot)
            names.push_back(prefix + name);
    return names;
}

/// A row that a mode hands to another parameter. Rows of slots are those of "FX1".
struct Alternate {
    uint32_t row;
    std::string name;
    std::map<std::string, float> settings;
};

std::vector<Alternate> Alternates() {
    const auto grain = [](const char* name) { return std::string("MoteWeaver_") + name; };
    const std::map<std::string, float> texture{{grain("GranularMode"), 0.5f}};
    std::vector<Alternate> rows{
        {3, "Spatializer Rate Synced", {{"Spatializer Rate Type", 0.3f}}},
        {9, grain("GrainSizeSynced"), {{grain("GrainSizeMode"), 0.3f}}},
        {9, grain("GrainSizeRatio"), {{grain("DensitySizeLink"), 0.6f}}},
        {9, grain("GrainSizeRatio"), {{grain("GranularMode"), 1.0f}}},
        {9, grain("TextureSizeAbsolute"), texture},
        {9,
         grain("TextureSizeSynced"),
         {{grain("GranularMode"), 0.5f}, {grain("TextureSizeMidiSync"), 0.6f}}},
        {11, grain("GranularPhaseHelper_RateSynced"), {{grain("DensityType"), 1.0f}}},
        {19, grain("Offset"), {{grain("PlaybackMode"), 0.5f}}},
        {19, grain("OffsetSynced"), {{grain("PlaybackMode"), 0.5f}, {grain("OffsetType"), 0.3f}}},
        {19, grain("ManualScanPosition"), {{grain("PlaybackMode"), 1.0f}}},
        {27, "Function1_RateSynced", {{"Function1_RateType", 0.3f}}},
        {28, "Function2_RateSynced", {{"Function2_RateType", 0.6f}}},
        {29, "Function3_RateSynced", {{"Function3_RateType", 1.0f}}},
        {33, "StepSeq_RateSynced", {{"StepSeq_RateType", 0.3f}}}};
    for (uint32_t slot = 0; slot < 2; ++slot) {
        const std::string fx = slot == 0 ? "FX1_" : "FX2_";
        const auto add = [&](uint32_t row, const char* name, const char* selector, float at) {
            rows.push_back({row + 30 * slot, fx + name, {{fx + selector, at}}});
        };
        add(36, "MultiModeFilter_CombFreq", "MultiModeFilter_Mode", 0.7f);
        add(36, "MultiModeFilter_CombFreq", "MultiModeFilter_Mode", 0.9f);
        add(42, "Delay_DelayTimeSynced", "Delay_MidiSync", 1.0f);
        add(44, "Delay_StereoWidthPP", "Delay_StereoMode", 1.0f);
        add(46, "OctaverDelay_DelayTimeSynced", "OctaverDelay_MidiSync", 1.0f);
        add(52, "TapeEcho_DelayTimeSynced", "TapeEcho_DelayTimeType", 0.3f);
        add(56, "TapeEcho_StereoWidthPP", "TapeEcho_DelayType", 1.0f);
        add(59, "Flanger_Chorus_RateSynced", "Flanger_Chorus_MidiSync", 1.0f);
    }
    return rows;
}

constexpr float kDepth = 0.25f;
int ByteOf(float position) { return static_cast<int>(std::min(position, 1.0f) * 255.0f); }

/// The five depths that are shown to one side of the middle.
const std::map<uint32_t, std::string> kFolded{{7, "RandomPitch"},
                                              {10, "RandomSize"},
                                              {13, "RandomDensity"},
                                              {21, "Spray"},
                                              {25, "RandomLayers"}};

TEST(FeedbackStreamTest, EveryRowShowsItsParameterMovedByTheRow) {
    StreamRig rig;
    const std::vector<std::string> names = PlainTargets();
    ASSERT_EQ(names.size(), kDestinations);
    // Positions of their own for all knobs, and one macro on all rows.
    const auto positionOf = [](uint32_t row) { return 0.05f + 0.006f * static_cast<float>(row); };
    for (uint32_t row = 0; row < kDestinations; ++row)
        rig.Set(names[row], positionOf(row)).Set(CellName(row, 5), 0.5f + 0.5f * kDepth);
    rig.Set("Macro 1", 1.0f);
    rig.RunChunk();
    rig.RunChunk();
    for (uint32_t row = 0; row < kDestinations; ++row) {
        if (kFolded.contains(row))
            continue;
        // A slot's mix has been moved already where it is handed to the slot.
        const bool isMix = row == 35 || row == 65;
        const float shown = (isMix ? positionOf(row) + kDepth : positionOf(row)) + kDepth;
        EXPECT_EQ(rig.Destination(row), ByteOf(shown)) << names[row];
        if (row >= 35) {
            EXPECT_EQ(rig.floats[row - 35], std::min(shown, 1.0f)) << names[row];
        }
    }
}

TEST(FeedbackStreamTest, ARowFollowsTheModeToTheParameterInForce) {
    for (const Alternate& alternate : Alternates()) {
        StreamRig rig;
        rig.Set(alternate.settings).Set(alternate.name, 0.375f);
        rig.Set(CellName(alternate.row, 6), 0.75f).Set("Macro 2", 0.5f);
        rig.RunChunk();
        EXPECT_EQ(rig.Destination(alternate.row), ByteOf(0.375f + 0.25f))
            << alternate.row << " " << alternate.name;
    }
}

TEST(FeedbackStreamTest, DepthsAreFoldedToTheSideOfTheirArrows) {
    const std::map<std::string, float> downAt{{"RandomPitch", 0.5f},
                                              {"RandomSize", 0.0f},
                                              {"RandomDensity", 1.0f},
                                              {"Spray", 0.0f},
                                              {"RandomLayers", 0.5f}};
    const auto curve = [](const std::string& name, float p) {
        if (name == "RandomSize")
            return (std::exp(1.5f * p) - 1.0f) / (std::exp(1.5f) - 1.0f);
        return std::pow(p, name == "RandomPitch" ? 2.6f : name == "RandomLayers" ? 1.0f : 1.5f);
    };
    for (const auto& [row, name] : kFolded)
        for (const float arrow : {0.0f, 0.5f, 1.0f})
            for (const float beat : {0.0f, 1.0f}) {
                StreamRig rig;
                const std::string direction = name == "Spray" ? "SprayDirection" : name + "Arrow";
                rig.Set("MoteWeaver_" + name, 0.5f)
                    .Set("MoteWeaver_" + direction, arrow)
                    .Set("MoteWeaver_GranularMode", beat)
                    .Set(CellName(row, 5), 0.625f)
                    .Set("Macro 1", 1.0f);
                rig.RunChunk();
                // A choice of two takes its upper half from the middle on.
                const float at = name == "RandomDensity" && arrow >= 0.5f ? 1.0f : arrow;
                const bool down =
                    at == downAt.at(name) || (name == "RandomDensity" && beat == 1.0f);
                const float half = 0.5f * curve(name, 0.75f);
                EXPECT_NEAR(rig.Destination(row), 255.0f * (down ? 0.5f - half : 0.5f + half), 1.0f)
                    << name << " " << arrow << " " << beat;
            }
}

}  // namespace
}  // namespace Quorvan::Processor
