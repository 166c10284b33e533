#include "granular/MoteWeaverParameters.h"

#include "granular/GranularTables.h"

namespace Quorvan::dsp {

namespace {

ParameterTable BuildTable() {
    using P = ParameterSpec;
    constexpr uint32_t poly = PotardKind::kPolynomial;
    constexpr uint32_t expo = PotardKind::kExponential;
    const auto choiceOf = [](const char* name, const auto& table) {
        return P::Stepped(name, static_cast<uint32_t>(table.size()));
    };
    return {
        P::Linear("Pitch", -36.0f, 36.0f),  // semitones; an index while a scale quantises
        P::Stepped("Scale", kScaleCount),
        P::Curved("RandomPitch", poly, 0.0f, 1.0f, 2.6f),
        P::Stepped("RandomPitchArrow", 3),
        P::Curved("RandomFine", poly, 0.0f, 1.0f, 2.6f),  // semitones
        P::Stepped("Shape", 8),
        P::Raw("ShapeParam"),
        P::Stepped("GrainSizeMode", 4),
        P::Curved("GrainSizeAbsolute", expo, 10.0f, 1000.0f, 4.6f),  // milliseconds
        choiceOf("GrainSizeSynced", kSyncedSizes),
        choiceOf("GrainSizeRatio", kSizeRatios),
        P::Curved("RandomSize", expo, 0.0f, 1.0f, 1.5f),
        P::Stepped("RandomSizeArrow", 3),
        P::Stepped("DensityType", 4),
        P::Curved("RandomDensity", poly, 0.0f, 1.0f, 1.5f),
        P::Stepped("RandomDensityArrow", 2),
        P::Raw("RandomDirection"),
        P::Raw("RandomPan"),
        P::Curved("Width", poly, 0.0f, 1.0f, 3.0f),
        choiceOf("MaxGrains", kGrainLimits),
        P::Raw("Stereo").AtPosition(1.0f),
        choiceOf("BufferLengthSynced", kBufferLengths),
        P::Raw("BufferFreeze"),
        P::Raw("BufferClear"),
        P::Linear("BufferPersistence", 0.0f, 0.8f),
        P::Stepped("PlaybackMode", 3),
        P::Stepped("PlaybackQuantizationMode", 3),
        P::Raw("ManualScanPosition"),
        P::Linear("Speed", -2.0f, 2.0f),     // samples per sample
        P::Linear("Offset", 0.0f, 1000.0f),  // milliseconds
        choiceOf("OffsetSynced", kSyncedOffsets),
        P::Stepped("OffsetType", 4),
        choiceOf("GridSize", kGridSizes),
        P::Stepped("GranularMode", 3),
        choiceOf("TextureDensity", kTextureLayers),
        P::Raw("TextureSizeMidiSync"),
        P::Curved("TextureSizeAbsolute", expo, 10.0f, 1000.0f, 4.6f),  // milliseconds
        choiceOf("TextureSizeSynced", kSyncedSizes),
        P::Raw("RandomLayers"),
        P::Stepped("RandomLayersArrow", 3),
        P::Curved("Spray", poly, 0.0f, 1.0f, 1.5f),
        P::Stepped("SprayDirection", 3),
        P::Raw("PlayHeadRetrig"),
        P::Raw("SequencerRetrig"),
        P::Raw("VisualizedBuffer"),
        P::Raw("Crossfade"),
        P::Stepped("TriggerMode", 2),
        P::Raw("GrainTrigger"),
        P::Linear("CenterStereo", -1.0f, 1.0f),
        P::Linear("Distance", 0.0f, 1.0f),
        P::Linear("RandomDistance", 0.0f, 1.0f),
        P::Curved("DistanceRange", expo, 1.0f, 100.0f, 5.0f).AtValue(50.0f),
        P::Curved("RandomWalkRate", expo, 0.0f, 10.0f, 7.0f),
        P::Raw("RandomWalk"),
        P::Curved("TransientSensitivity", expo, 0.0f, 1.0f, -5.0f),
        P::Raw("DensitySizeLink"),
        P::Stepped("BeatDensityType", 3),
        P::Stepped("BeatOffsetType", 3),
        P::Stepped("BitCrushPreset", 6),
        P::Linear("LfoStereoX_Out", -1.0f, 1.0f),
        P::Linear("LfoStereoY_Out", 0.0f, 1.0f),
        P::Linear("SpatAmountX", 0.0f, 1.0f),
        P::Linear("SpatAmountY", 0.0f, 1.0f),
        P::Raw("SpatializerEnabled"),
        P::Stepped("GateOut", 2),
        P::Stepped("GateSelection", 3),
    };
}

}  // namespace

const ParameterTable& MoteWeaverTable() {
    static const ParameterTable table = BuildTable();
    return table;
}

}  // namespace Quorvan::dsp
