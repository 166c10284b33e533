#include "host/parameters/ChoiceLists.h"
#include "host/parameters/DescriptionTables.h"

namespace Quorvan::Host {

namespace {

using namespace Form;
constexpr auto kOutput = ParameterRole::Output;
constexpr auto kDriven = ParameterRole::Driven;

constexpr DescriptionRow kGenerator[]{
    {"Mode", "Run Mode", Choice(Choices::RunModes)},
    {"MidiSync", "Sync", kSwitch},
    {"RateUnSynced", "Rate (Free)", kHertz},
    {"RateSynced", "Rate (Synced)", Choice(Choices::GeneratorRates)},
    {"RateSyncedType", "Rate Note Type", Choice(Choices::NoteTypes)},
    {"PhaseInit", "Start Phase", kDegrees},
    {"KbTracking", "Key Tracking", kSwitch},
    {"KbTrackingAmount", "Key Tracking Amount", kPercent},
    {"KbTrackingFreq", "Key Frequency", kHertz},
    {"GateIn", "Gate In", kSwitch},
    {"ControlRate", "Control Rate", kSwitch},
    {"SppHardFollow", "Song Position Lock", kSwitch},
    {"Swing", "Swing", Number(Unit::Percent)},
};

constexpr DescriptionRow kDensity[]{
    {"RateUnSynced", "Density (Free)", kHertz},
    {"RateSynced", "Density (Synced)", Choice(Choices::GrainRates)},
};

constexpr DescriptionRow kSongClock[]{
    {"RateSynced", "Rate (Synced)", Choice(Choices::GrainRates)},
};

constexpr DescriptionRow kTextureClock[]{
    {"RateSynced", "Rate (Synced)", Choice(Choices::TextureRates)},
};

constexpr DescriptionRow kFunction[]{
    {"RateType", "Rate Sync", Choice(Choices::RateTypes)},
    {"LastActivePointIndex", "Last Point", kCount},
    {"RandomAmount", "Random Amount", kPercent},
    {"Bipolar", "Bipolar", kSwitch},
    {"Scale", "Scale", kPercent},
    {"FeedbackNextPoint", "Next Point", kCount, kOutput},
    {"FeedbackPositionInSegment", "Position in Segment", kPercent, kOutput},
    {"PointX#", "Point # Time", kPercent},
    {"PointY#", "Point # Level", kPercent},
    {"Tension#", "Segment # Tension", kPlain},
    {"RandomX#", "Point # Random Time", kPercent},
    {"RandomY#", "Point # Random Level", kPercent},
    {"CntrlSrc", "Control Source", kPercent},
    {"OutputValue", "Output", kPercent, kOutput},
    {"Smooth", "Smoothing", Number(Unit::Seconds, 0.3)},  // the slew takes 0.3 s at full setting
    {"Destination", "Destination", kPercent},
    {"Amount", "Amount", kPercent},
    {"GateOut", "Gate", kSwitch, kOutput},
};

constexpr DescriptionRow kLfo[]{
    {"Waveform", "Waveform", Choice(Choices::Waveforms)},
    {"Amp", "Amplitude", kPercent},
    {"Smooth", "Smoothing", kSeconds},
    {"SmoothRateLinked", "Smoothing Follows Rate", kSwitch},
    {"Fade", "Fade In", kSeconds},
    {"Stereo", "Stereo", kSwitch},
    {"StereoSpread", "Stereo Phase", kDegrees},
    {"SnHStereoMode", "Sample and Hold Stereo", Choice(Choices::HoldSpreads)},
    {"Unipolar", "Unipolar", kSwitch},
    {"CurrentPhaseFeedback", "Present Phase", kPercent, kOutput},
    {"CurrentValueLFeedback", "Present Value", kPercent, kOutput},
};

constexpr DescriptionRow kStepSequencer[]{
    {"NbSteps", "Steps", kCount},
    {"CurrentStep", "Current Step", kCount, kOutput},
    {"RateType", "Rate Sync", Choice(Choices::RateTypes)},
    {"Bipolar", "Bipolar", kSwitch},
    {"Scale", "Scale", kPercent},
    {"Smooth", "Glide", kPercent},
    {"LoopMode", "Loop Mode", Choice(Choices::LoopModes)},
    {"RandomAmount", "Random Amount", kPercent},
    {"StepVal#", "Step # Value", kPercent},
    {"StepDev#", "Step # Deviation", kPercent, kOutput},
};

/// What the processor keeps for the follower.
constexpr DescriptionRow kFollowerInput[]{
    {"Source", "Source", Choice(Choices::FollowerSources)},
    {"Gain", "Gain", kDecibels},
};

constexpr DescriptionRow kEnvelopeFollower[]{
    {"Attack", "Attack", kSeconds},
    {"Release", "Release", kSeconds},
    {"RMSWindowDurationMs", "Window", kMilliseconds},
    {"FixedLinearGain", "Level Gain", Number(Unit::Factor)},
    {"StereoInput", "Stereo", kSwitch, kDriven},
};

}  // namespace

DescriptionRows GeneratorRows() { return kGenerator; }
DescriptionRows DensityRows() { return kDensity; }
DescriptionRows SongClockRows() { return kSongClock; }
DescriptionRows TextureClockRows() { return kTextureClock; }
DescriptionRows FunctionRows() { return kFunction; }
DescriptionRows LfoRows() { return kLfo; }
DescriptionRows StepSequencerRows() { return kStepSequencer; }
DescriptionRows EnvelopeFollowerRows() { return kEnvelopeFollower; }
DescriptionRows FollowerInputRows() { return kFollowerInput; }

}  // namespace Quorvan::Host
