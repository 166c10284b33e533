#pragma once

#include <cstdint>

#include "framework/ParameterTable.h"

namespace Quorvan::dsp {

/// Ids of the granular module's own parameters, in its id space: the children's come first.
namespace MoteWeaverId {
enum Id : uint32_t {
    Pitch = 92,
    Scale,
    RandomPitch,
    RandomPitchArrow,
    RandomFine,
    Shape,
    ShapeParam,
    GrainSizeMode,
    GrainSizeAbsolute,
    GrainSizeSynced,
    GrainSizeRatio,
    RandomSize,
    RandomSizeArrow,
    DensityType,
    RandomDensity,
    RandomDensityArrow,
    RandomDirection,
    RandomPan,
    Width,
    MaxGrains,
    Stereo,
    BufferLengthSynced,
    BufferFreeze,
    BufferClear,
    BufferPersistence,
    PlaybackMode,
    PlaybackQuantizationMode,
    ManualScanPosition,
    Speed,
    Offset,
    OffsetSynced,
    OffsetType,
    GridSize,
    GranularMode,
    TextureDensity,
    TextureSizeMidiSync,
    TextureSizeAbsolute,
    TextureSizeSynced,
    RandomLayers,
    RandomLayersArrow,
    Spray,
    SprayDirection,
    PlayHeadRetrig,
    SequencerRetrig,
    VisualizedBuffer,
    Crossfade,
    TriggerMode,
    GrainTrigger,
    CenterStereo,
    Distance,
    RandomDistance,
    DistanceRange,
    RandomWalkRate,
    RandomWalk,
    TransientSensitivity,
    DensitySizeLink,
    BeatDensityType,
    BeatOffsetType,
    BitCrushPreset,
    LfoStereoX_Out,
    LfoStereoY_Out,
    SpatAmountX,
    SpatAmountY,
    SpatializerEnabled,
    GateOut,
    GateSelection,
    End
};
}  // namespace MoteWeaverId

/// The rows of the own parameters, in id order.
const ParameterTable& MoteWeaverTable();

/// Input channels of the granular module: two of audio, then modulation rows.
namespace MoteWeaverRow {
enum Row : uint32_t {
    AudioLeft = 0,
    AudioRight,
    StereoX,  ///< given always, read without a test of its activity
    StereoY,
    Pitch,
    RandomPitch,
    ShapeParam,
    GrainSize,  ///< whichever size is in force
    RandomSize,
    Density,  ///< added to the main clock's rate input
    TextureDensity,
    RandomDensity,
    RandomDirection,
    RandomPan,
    Width,
    BufferPersistence,
    BufferFreeze,
    PlayHead,  ///< manual position, speed or offset, by the playback mode
    GridSize,
    Spray,
    GrainTrigger,
    TransientSensitivity,
    RandomFine,
    RandomLayers,
    Count
};
}  // namespace MoteWeaverRow

}  // namespace Quorvan::dsp
