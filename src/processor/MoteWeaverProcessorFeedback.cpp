// What a user interface draws of the modulation, and which parameter each destination row moves.
#include <algorithm>
#include <cstring>

#include "processor/MoteWeaverProcessor.h"

namespace Quorvan::Processor {

namespace {

namespace Id = dsp::MoteWeaverId;

constexpr uint32_t kChunkBlocks = 32;
constexpr uint32_t kSliceBlocks = 4;
constexpr uint32_t kFirstFxRow = 35;
constexpr uint32_t kFxRowStep = 30;
constexpr uint32_t kFxIndexStep = ModuleIndex::kFX2 - ModuleIndex::kFX1;

/// Parameters of the rows up to 34; those that a mode decides are worked out.
constexpr uint32_t kByMode = 0xffffffffu;
constexpr std::array<uint32_t, kFirstFxRow> kPlainTargets{
    kDryWet,
    kFeedback,
    kGranularVolume,
    kByMode,  // 3 spatialiser rate
    kSpatializerAmount,
    kSpatializerDistance,
    Id::Pitch,
    Id::RandomPitch,
    Id::ShapeParam,
    kByMode,  // 9 grain size
    Id::RandomSize,
    kByMode,  // 11 density
    Id::TextureDensity,
    Id::RandomDensity,
    Id::RandomDirection,
    Id::RandomPan,
    Id::Width,
    Id::BufferPersistence,
    Id::BufferFreeze,
    kByMode,  // 19 play head
    Id::GridSize,
    Id::Spray,
    Id::GrainTrigger,
    Id::TransientSensitivity,
    Id::RandomFine,
    Id::RandomLayers,
    kEnvelopeFollowerGain,
    kByMode,
    kByMode,
    kByMode,  // 27 to 29 rates of the functions
    ModuleIndex::kFunction1 + dsp::FunctionGenerator<64>::Scale,
    ModuleIndex::kFunction2 + dsp::FunctionGenerator<64>::Scale,
    ModuleIndex::kFunction3 + dsp::FunctionGenerator<64>::Scale,
    kByMode,  // 33 rate of the sequencer
    kStepSeqScale,
};

/// A row of a slot: the parameter that it moves, and the one that takes its place in some modes.
struct SlotTarget {
    enum Rule : uint8_t { kAlways, kIfSwitchOn, kIfNotZero, kIfComb, kIfPingPong };

    uint32_t index;  ///< in "FX1"
    Rule rule = kAlways;
    uint32_t other = 0;     ///< in force where the rule holds
    uint32_t selector = 0;  ///< what the rule looks at
};

constexpr std::array<SlotTarget, kFxRowStep> kSlotTargets{{
    {1361},
    {1198, SlotTarget::kIfComb, 1201, 1197},
    {1199},
    {1204},
    {1214},
    {1215},
    {1216},
    {1227, SlotTarget::kIfSwitchOn, 1237, 1235},
    {1228},
    {1232, SlotTarget::kIfSwitchOn, 1233, 1234},
    {1238},
    {1273, SlotTarget::kIfSwitchOn, 1274, 1281},
    {1275},
    {1276},
    {1278},
    {1283},
    {1284},
    {1286, SlotTarget::kIfNotZero, 1291, 1290},
    {1287},
    {1288},
    {1285},
    {1293, SlotTarget::kIfPingPong, 1294, 1292},
    {1302},
    {1303},
    {1318, SlotTarget::kIfSwitchOn, 1326, 1324},
    {1319},
    {1336},
    {1343},
    {1333},
    {1339},
}};

bool Holds(SlotTarget::Rule rule, dsp::Parameter& selector) {
    const auto value = static_cast<int32_t>(selector.GetValue());
    switch (rule) {
        case SlotTarget::kIfSwitchOn:
            return selector.GetNormalized() > 0.5f;
        case SlotTarget::kIfNotZero:
            return value != 0;
        case SlotTarget::kIfComb:
            return value == 3 || value == 4;
        case SlotTarget::kIfPingPong:
            return value == 1;
        default:
            return false;
    }
}

/// The row's depth has a direction beside it; it is shown downwards where the direction has value.
struct FoldedRow {
    uint32_t row;
    uint32_t depth;
    uint32_t arrow;
    int32_t downValue;
};
constexpr std::array<FoldedRow, 5> kFoldedRows{{
    {7, Id::RandomPitch, Id::RandomPitchArrow, 1},
    {10, Id::RandomSize, Id::RandomSizeArrow, 0},
    {13, Id::RandomDensity, Id::RandomDensityArrow, 1},
    {21, Id::Spray, Id::SprayDirection, 0},
    {25, Id::RandomLayers, Id::RandomLayersArrow, 1},
}};

uint8_t SourceByte(float x) {
    return static_cast<uint8_t>(std::clamp((x + 1.0f) * 127.5f, 0.0f, 255.0f));
}

uint8_t PositionByte(float position) { return static_cast<uint8_t>(position * 255.0f); }

}  // namespace

uint32_t MoteWeaverProcessor::TargetOfRow(uint32_t row) {
    using G = dsp::IGenerator;
    if (row >= kFirstFxRow) {
        const uint32_t shift = row >= kFirstFxRow + kFxRowStep ? kFxIndexStep : 0;
        const SlotTarget& target = kSlotTargets[(row - kFirstFxRow) % kFxRowStep];
        const bool moved = target.rule != SlotTarget::kAlways &&
                           Holds(target.rule, *FindRecord(target.selector + shift));
        return (moved ? target.other : target.index) + shift;
    }
    if (kPlainTargets[row] != kByMode)
        return kPlainTargets[row];
    const auto isOn = [this](uint32_t index) { return FindRecord(index)->GetNormalized() > 0.5f; };
    switch (row) {
        case 3:
            return Index(kSpatializerRateType) != 0 ? kSpatializerRateSynced
                                                    : kSpatializerRateUnSynced;
        case 9: {
            const int32_t mode = IndexAt(Id::GranularMode);
            if (mode == dsp::GranularSettings::kTexture)
                return isOn(Id::TextureSizeMidiSync) ? Id::TextureSizeSynced
                                                     : Id::TextureSizeAbsolute;
            if (mode == dsp::GranularSettings::kBeat || isOn(Id::DensitySizeLink))
                return Id::GrainSizeRatio;
            return IndexAt(Id::GrainSizeMode) != 0 ? Id::GrainSizeSynced : Id::GrainSizeAbsolute;
        }
        case 11:
            return isOn(G::MidiSync) ? G::RateSynced : G::RateUnSynced;
        case 19:
            if (IndexAt(Id::PlaybackMode) == dsp::CaptureBuffer::kScan)
                return Id::Speed;
            if (IndexAt(Id::PlaybackMode) == dsp::CaptureBuffer::kFollow)
                return IndexAt(Id::OffsetType) != 0 ? Id::OffsetSynced : Id::Offset;
            return Id::ManualScanPosition;
        case 33:
            return ModuleIndex::kStepSeq +
                   (Index(kStepSeqRateType) != 0 ? G::RateSynced : G::RateUnSynced);
        default: {
            constexpr std::array kFunctions{ModuleIndex::kFunction1, ModuleIndex::kFunction2,
                                            ModuleIndex::kFunction3};
            const uint32_t k = row - 27;
            return kFunctions[k] +
                   (Index(kFunction1RateType + k) != 0 ? G::RateSynced : G::RateUnSynced);
        }
    }
}

float MoteWeaverProcessor::DestDisplayValue(uint32_t row) {
    const float moved = Row(row)[0];
    for (const FoldedRow& folded : kFoldedRows) {
        if (folded.row != row)
            continue;
        const float depth = FindRecord(folded.depth)->GetModulatedValue(moved);
        bool down = IndexAt(folded.arrow) == folded.downValue;
        if (folded.depth == Id::RandomDensity)
            down = down || IndexAt(Id::GranularMode) == dsp::GranularSettings::kBeat;
        return down ? 0.5f - 0.5f * depth : 0.5f + 0.5f * depth;
    }
    return std::clamp(GetParameterNormalized(TargetOfRow(row)) + moved, 0.0f, 1.0f);
}

bool MoteWeaverProcessor::IsBlobParameter(uint32_t index) {
    return index == Id::VisualizedBuffer || index == kFeedbackBigChunk || index == kFXFeedbackChunk;
}

BlobData MoteWeaverProcessor::GetBlobParameter(uint32_t index) {
    switch (index) {
        case Id::VisualizedBuffer:
            return {sizeof(DisplayRecord), &display.Record()};
        case kFeedbackBigChunk:
            return {sizeof(bigChunks[0]), bigChunks[bufferIndex]};
        case kFXFeedbackChunk:
            return {sizeof(fxChunks[0]), fxChunks[bufferIndex]};
        default:
            return {};
    }
}

/// A slice every 4 blocks, the chunks and the plain positions every 32.
void MoteWeaverProcessor::SendFeedback(const dsp::ProcessBlock& block) {
    const bool chunkEnds = feedbackCounter == kChunkBlocks - 1;
    if (block.offline == 1 || !CanSendFeedback() || Position(GuiVisible) <= 0.5f) {
        feedbackCounter = chunkEnds ? 0 : feedbackCounter + 1;
        return;
    }
    if (feedbackCounter % kSliceBlocks == 0)
        TakeSlice(feedbackCounter / kSliceBlocks);
    if (!chunkEnds) {
        ++feedbackCounter;
        return;
    }
    SendPositions();
    PushBlobChange(kFeedbackBigChunk, sizeof(bigChunks[0]), bigChunks[bufferIndex]);
    SendFxChunk();
    bufferIndex = (bufferIndex + 1) % kChunkBuffers;
    feedbackCounter = 0;
    SendAssignments();
}

void MoteWeaverProcessor::TakeSlice(uint32_t slice) {
    uint8_t* const chunk = bigChunks[bufferIndex];
    for (uint32_t s = 0; s < kSourceCount; ++s)
        chunk[s * kChunkSlices + slice] = SourceByte(Matrix().GetSourceRow(s)[0]);
    for (uint32_t d = 0; d < kDestinationCount; ++d)
        chunk[(kSourceCount + d) * kChunkSlices + slice] = PositionByte(DestDisplayValue(d));
}

void MoteWeaverProcessor::FillInitialChunk() {
    for (uint32_t slice = 0; slice < kChunkSlices; ++slice)
        TakeSlice(slice);
}

void MoteWeaverProcessor::SendPositions() {
    constexpr std::array<uint32_t, 6> kRows{14, 8, 6, 7, 9, 10};
    for (uint32_t i = 0; i < kRows.size(); ++i) {
        const uint32_t index = kDirectionFeedback + i;
        dsp::Parameter& shown = ParameterAt(index);
        const float value = DestDisplayValue(kRows[i]);
        if (value == shown.GetNormalized())
            continue;
        shown.WriteNormalized(value, true);  // without a changed flag: nobody acts on it
        PushParameterChange(index, value);
    }
}

void MoteWeaverProcessor::SendFxChunk() {
    float* const chunk = fxChunks[bufferIndex];
    for (uint32_t i = 0; i < kFxChunkRows; ++i) {
        const uint32_t row = kFirstFxRow + i;
        chunk[i] = std::clamp(GetParameterNormalized(TargetOfRow(row)) + Row(row)[0], 0.0f, 1.0f);
    }
    PushBlobChange(kFXFeedbackChunk, sizeof(fxChunks[0]), chunk);
}

void MoteWeaverProcessor::SendAssignments() {
    for (uint32_t n = 0; n < kDestinationCount; ++n) {
        const uint32_t index = kDest1Assigned + n;
        const float assigned = Matrix().IsDestinationConnected(n) ? 1.0f : 0.0f;
        if (assigned == Position(index))
            continue;
        SetParameterNormalized(index, assigned);
        PushParameterChange(index, assigned);
    }
}

}  // namespace Quorvan::Processor
