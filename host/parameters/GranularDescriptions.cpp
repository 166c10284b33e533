#include "host/parameters/ChoiceLists.h"
#include "host/parameters/DescriptionTables.h"

namespace Quorvan::Host {

namespace {

using namespace Form;
constexpr auto kOutput = ParameterRole::Output;
constexpr auto kDriven = ParameterRole::Driven;

constexpr DescriptionRow kGranular[]{
    {"Pitch", "Pitch", kSemitones},
    {"Scale", "Scale", Choice(Choices::Scales)},
    {"RandomPitch", "Random Pitch", kPercent},
    {"RandomPitchArrow", "Random Pitch Direction", Choice(Choices::PitchArrows)},
    {"RandomFine", "Random Fine Pitch", Number(Unit::Cents, 100.0)},
    {"Shape", "Grain Shape", Choice(Choices::GrainShapes)},
    {"ShapeParam", "Grain Shape Amount", kPercent},
    {"GrainSizeMode", "Grain Size Sync", Choice(Choices::RateTypes)},
    {"GrainSizeAbsolute", "Grain Size (Free)", kMilliseconds},
    {"GrainSizeSynced", "Grain Size (Synced)", Choice(Choices::GrainSizes)},
    {"GrainSizeRatio", "Grain Size (Ratio)", Choice(Choices::SizeRatios)},
    {"RandomSize", "Random Size", kPercent},
    {"RandomSizeArrow", "Random Size Direction", Choice(Choices::SizeArrows)},
    {"DensityType", "Density Sync", Choice(Choices::RateTypes)},
    {"RandomDensity", "Random Density", kPercent},
    {"RandomDensityArrow", "Random Density Kind", Choice(Choices::DensityArrows)},
    {"RandomDirection", "Forward Grains", kPercent},
    {"RandomPan", "Random Pan", kPercent},
    {"Width", "Width", kPercent},
    {"MaxGrains", "Grain Limit", Choice(Choices::GrainLimits)},
    {"Stereo", "Stereo", kSwitch},
    {"BufferLengthSynced", "Buffer Length", Choice(Choices::BufferLengths)},
    {"BufferFreeze", "Freeze", kSwitch},
    {"BufferClear", "Clear", kSwitch},
    {"BufferPersistence", "Persistence", kPercent},
    {"PlaybackMode", "Play Head Mode", Choice(Choices::PlaybackModes)},
    {"PlaybackQuantizationMode", "Start Quantization", Choice(Choices::StartQuantizers)},
    {"ManualScanPosition", "Play Head Position", kPercent},
    {"Speed", "Play Head Speed", Number(Unit::Factor)},
    {"Offset", "Play Head Offset (Free)", kMilliseconds},
    {"OffsetSynced", "Play Head Offset (Synced)", Choice(Choices::PlayHeadOffsets)},
    {"OffsetType", "Play Head Offset Sync", Choice(Choices::RateTypes)},
    {"GridSize", "Grid Size", Choice(Choices::GridSizes)},
    {"GranularMode", "Granular Mode", Choice(Choices::GranularModes)},
    {"TextureDensity", "Density (Texture)", Choice(Choices::TextureLayers)},
    {"TextureSizeMidiSync", "Grain Size Sync (Texture)", kSwitch},
    {"TextureSizeAbsolute", "Grain Size (Texture, Free)", kMilliseconds},
    {"TextureSizeSynced", "Grain Size (Texture, Synced)", Choice(Choices::GrainSizes)},
    {"RandomLayers", "Random Layers", kPercent},
    {"RandomLayersArrow", "Random Layers Direction", Choice(Choices::LayerArrows)},
    {"Spray", "Spray", kPercent},
    {"SprayDirection", "Spray Direction", Choice(Choices::SprayDirections)},
    {"PlayHeadRetrig", "Play Head Retrigger", kSwitch},
    {"SequencerRetrig", "Sequencer Retrigger", kSwitch},
    {"VisualizedBuffer", "Buffer Display", kBinary, kOutput},
    {"Crossfade", "Write Head Crossfade", kSwitch},
    {"TriggerMode", "Trigger Mode", Choice(Choices::TriggerModes)},
    {"GrainTrigger", "Grain Trigger", kSwitch},
    {"CenterStereo", "Stereo Position", kPercent},
    {"Distance", "Distance", kPercent},
    {"RandomDistance", "Random Distance", kPercent},
    {"DistanceRange", "Distance Range", kPlain},
    {"RandomWalkRate", "Random Walk Rate", kPlain, kDriven},
    {"RandomWalk", "Random Walk", kSwitch, kDriven},
    {"TransientSensitivity", "Transient Sensitivity", kPercent},
    {"DensitySizeLink", "Size Follows Density", kSwitch},
    {"BeatDensityType", "Density Sync (Beat)", Choice(Choices::NoteTypes)},
    {"BeatOffsetType", "Play Head Offset Sync (Beat)", Choice(Choices::NoteTypes)},
    {"BitCrushPreset", "Lo-Fi", Choice(Choices::CrushPresets)},
    {"LfoStereoX_Out", "Present Stereo Position", kPercent, kOutput},
    {"LfoStereoY_Out", "Present Distance", kPercent, kOutput},
    {"SpatAmountX", "Spatializer Depth X", kPercent, kDriven},
    {"SpatAmountY", "Spatializer Depth Y", kPercent, kDriven},
    {"SpatializerEnabled", "Spatializer On", kSwitch, kDriven},
    {"GateOut", "Gate", kSwitch, kOutput},
    {"GateSelection", "Gate Source", Choice(Choices::GateSelections)},
};

constexpr DescriptionRow kSequencer[]{
    {"RateSynced", "Rate (Synced)", Choice(Choices::GrainRates)},
    {"NbSteps", "Steps", kCount},
    {"CurrentStep", "Current Step", kCount, kOutput},
    {"LoopMode", "Loop Mode", Choice(Choices::LoopModes)},
    {"StepVal#", "Step # Multiplier", Choice(Choices::StepMultipliers)},
    {"StepOnOff#", "Step # On", kSwitch},
};

constexpr DescriptionRow kBitCrusher[]{
    {"Wet", "Dry / Wet", kPercent},
    {"Bitdepth", "Bit Depth", Number(Unit::Bits)},
    {"Downsample", "Downsampling", Number(Unit::Factor)},
    {"InGainCompensated", "Drive", kDecibels},
    {"StereoBC", "Stereo", kSwitch},
};

}  // namespace

DescriptionRows GranularRows() { return kGranular; }
DescriptionRows GranularSequencerRows() { return kSequencer; }
DescriptionRows BitCrusherRows() { return kBitCrusher; }

}  // namespace Quorvan::Host
