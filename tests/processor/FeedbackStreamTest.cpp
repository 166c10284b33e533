// What a user interface is sent: chunks, positions and flags, and when.
#include <cstring>

#include "support/DestinationRows.h"
#include "support/Test.h"

namespace Quorvan::Processor {
namespace {

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

TEST(FeedbackStreamTest, OneChunkOfEachKindComesInThirtyTwoBlocksFromThreeBuffersInTurn) {
    StreamRig rig;
    std::vector<const void*> big, fx;
    for (size_t k = 0; k < 8; ++k) {
        for (int block = 0; block < 32; ++block) {
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
            EXPECT_EQ(std::memcmp(changes[0].data, copy, sizeof(copy)), 0);
        }
        EXPECT_EQ(big[k], big[k % 3]);
        EXPECT_EQ(fx[k], fx[k % 3]);
    }
    EXPECT_EQ(std::set<const void*>(big.begin(), big.end()).size(), 3u);
    EXPECT_EQ(std::set<const void*>(fx.begin(), fx.end()).size(), 3u);
}

TEST(FeedbackStreamTest, ASliceIsTakenInEveryFourthBlock) {
    StreamRig rig;
    for (int block = 0; block < 32; ++block)
        rig.Set("Macro 1", static_cast<float>(block) / 32.0f).RunSilence(block < 31 ? 1 : 0);
    rig.RunChunk();  // one block of the chunk was left; the rest begins the next one
    for (uint32_t slice = 0; slice < kSlices; ++slice)
        EXPECT_EQ(rig.bytes[5 * kSlices + slice], static_cast<int>((slice / 8.0 + 1.0) * 127.5));
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
    rig.SetAll(
        "MoteWeaver_RandomDirection=0.25;MoteWeaver_ShapeParam=0.375;"
        "MoteWeaver_Pitch=0.5;MoteWeaver_GrainSizeAbsolute=0.75;"
        "MoteWeaver_GranularMode=0.5;MoteWeaver_TextureSizeAbsolute=0.625");
    rig.RunChunk();
    const Changes changes = rig.TakeParameterChanges();
    const std::vector<std::pair<const char*, float>> expected{{"Direction_Feedback", 0.25f},
                                                              {"Shape_Feedback", 0.375f},
                                                              {"Pitch_Feedback", 0.5f},
                                                              {"Size_Feedback", 0.625f}};
    ASSERT_EQ(changes.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        const auto& [name, position] = expected[i];
        EXPECT_EQ(changes[i].index, ProcessorRig::IndexOf(name));
        EXPECT_EQ(changes[i].value, position);
        EXPECT_EQ(rig.Get(name), position);
    }
    rig.RunChunk();
    EXPECT_TRUE(rig.TakeParameterChanges().empty());
}

TEST(FeedbackStreamTest, FlagsFollowTheRoutingAndAFullListDropsTheRest) {
    StreamRig rig;
    Route(rig, 0, 6, 0.5f);
    Route(rig, 3, 94, -0.5f);
    const auto told = [&rig] {
        rig.RunChunk();
        return rig.TakeParameterChanges();
    };
    Changes changes = told();
    ASSERT_EQ(changes.size(), 2u);
    EXPECT_EQ(changes[0].index, kFirstFlag + 6);
    EXPECT_EQ(changes[0].value, 1.0f);
    EXPECT_EQ(changes[1].index, kFirstFlag + 94);
    rig.Set("Modulations_Dst7_Src1_Activated", 0.0f);
    Route(rig, 3, 94, 0.0f);
    changes = told();
    ASSERT_EQ(changes.size(), 2u);
    EXPECT_EQ(changes[0].value, 0.0f);

    for (uint32_t row = 0; row < kDestinations; ++row)
        Route(rig, 6, row, 0.5f);  // of a macro at 0: nothing moves
    changes = told();
    ASSERT_EQ(changes.size(), 64u);
    for (uint32_t row = 0; row < kDestinations; ++row) {
        EXPECT_TRUE(row >= 64 || changes[row].index == kFirstFlag + row);
        EXPECT_EQ(rig.GetAt(kFirstFlag + row), 1.0f);
    }
    EXPECT_TRUE(told().empty());  // what was dropped stays untold
}

/// The five depths that are shown to one side of the middle, by their rows.
struct Folded {
    std::string name, arrow;
    float downAt;    ///< position of the arrow
    float exponent;  ///< of the curve; 0 is the exponential of 1.5
};
const std::map<uint32_t, Folded> kFolded{{7, {"RandomPitch", "RandomPitchArrow", 0.5f, 2.6f}},
                                         {10, {"RandomSize", "RandomSizeArrow", 0.0f, 0.0f}},
                                         {13, {"RandomDensity", "RandomDensityArrow", 1.0f, 1.5f}},
                                         {21, {"Spray", "SprayDirection", 0.0f, 1.5f}},
                                         {25, {"RandomLayers", "RandomLayersArrow", 0.5f, 1.0f}}};

TEST(FeedbackStreamTest, EveryRowShowsTheParameterInForceMovedByTheRow) {
    std::vector<DestinationRow> rows = GranularRows();
    for (const char* const slot : {"FX1", "FX2"})
        for (const DestinationRow& row : SlotRows(slot))
            rows.push_back(row);
    std::set<uint32_t> seen;
    for (const DestinationRow& row : rows) {
        seen.insert(row.row);
        if (kFolded.contains(row.row))
            continue;
        StreamRig rig;
        row.Apply(rig, 0.375f);
        rig.Set("Macro 2", 0.5f);
        Route(rig, 6, row.row, 0.5f);
        rig.RunChunk();
        // A slot's mix has been moved already where it is handed to the slot.
        const float shown = row.row == 35 || row.row == 65 ? 0.875f : 0.625f;
        EXPECT_EQ(rig.Destination(row.row), static_cast<int>(shown * 255.0f))
            << row.row << row.knob;
        EXPECT_TRUE(row.row < 35 || rig.floats[row.row - 35] == shown) << row.row << row.knob;
    }
    EXPECT_EQ(seen.size(), kDestinations);
}

}  // namespace
}  // namespace Quorvan::Processor
