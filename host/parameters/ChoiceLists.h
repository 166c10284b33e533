#pragma once

#include "host/parameters/ParameterForm.h"

/// Names of the choices of stepped parameters, in the order of their values. Note lengths are
/// written as fractions of a whole note.
namespace Quorvan::Host::Choices {

// The granular engine.
const ChoiceList& Scales();
const ChoiceList& GrainShapes();
const ChoiceList& GranularModes();
const ChoiceList& PlaybackModes();
const ChoiceList& StartQuantizers();
const ChoiceList& TriggerModes();
const ChoiceList& GateSelections();
const ChoiceList& CrushPresets();
const ChoiceList& PitchArrows();
const ChoiceList& SizeArrows();
const ChoiceList& DensityArrows();
const ChoiceList& LayerArrows();
const ChoiceList& SprayDirections();
const ChoiceList& GrainLimits();
const ChoiceList& GridSizes();
const ChoiceList& TextureLayers();
const ChoiceList& SizeRatios();
const ChoiceList& StepMultipliers();
const ChoiceList& GrainSizes();
const ChoiceList& BufferLengths();
const ChoiceList& PlayHeadOffsets();
const ChoiceList& GrainRates();
const ChoiceList& TextureRates();

// Clocks and modulation.
const ChoiceList& RunModes();
const ChoiceList& GeneratorRates();
const ChoiceList& NoteTypes();  ///< straight, triplet, dotted
const ChoiceList& RateTypes();  ///< the same with free ahead of them
const ChoiceList& LoopModes();
const ChoiceList& Waveforms();
const ChoiceList& HoldSpreads();
const ChoiceList& FollowerSources();
const ChoiceList& Trajectories();

// The effects.
const ChoiceList& EffectTypes();
const ChoiceList& SlotPositions();
const ChoiceList& FilterModes();
const ChoiceList& FilterSlopes();
const ChoiceList& DistortionCurves();
const ChoiceList& EchoTimes();
const ChoiceList& EchoStereoModes();
const ChoiceList& OctaverModes();
const ChoiceList& TapWindows();
const ChoiceList& FeedbackPolarities();
const ChoiceList& ChannelModes();
const ChoiceList& ChorusWaveforms();

}  // namespace Quorvan::Host::Choices
