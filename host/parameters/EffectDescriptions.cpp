#include "host/parameters/ChoiceLists.h"
#include "host/parameters/DescriptionTables.h"

namespace Quorvan::Host {

namespace {

using namespace Form;
constexpr auto kOutput = ParameterRole::Output;
constexpr auto kDriven = ParameterRole::Driven;
constexpr ParameterForm kCents = Number(Unit::Cents);
/// The dry/wet parameter of an effect follows that of its slot.
constexpr DescriptionRow DryWet(std::string_view name) {
    return {name, "Dry / Wet", kPercent, kDriven};
}

constexpr DescriptionRow kSlot[]{
    {"BypassUselessParam", "Unused", kPercent, kDriven},
    {"Dry / Wet", "Dry / Wet", kPercent},
    {"Position", "Position", Choice(Choices::SlotPositions)},
    {"ModuleType", "Effect", Choice(Choices::EffectTypes)},
    {"Bypass", "Bypass", kSwitch},
    {"CopyOnBypass", "Pass Through on Bypass", kSwitch},
    {"CrossfadeOnBypass", "Crossfade on Bypass", kSwitch},
    {"FadeOnModuleChange", "Fade on Change", kSwitch},
    {"DryWetInternal", "Dry / Wet of the Effect", kPercent, kDriven},
};

constexpr DescriptionRow kFilter[]{
    DryWet("Wet"),
    {"Mode", "Mode", Choice(Choices::FilterModes)},
    {"Freq", "Cutoff", kHertz},
    {"Q", "Resonance", kPlain},
    {"Slope", "Slope", Choice(Choices::FilterSlopes)},
    {"CombFreq", "Comb Frequency", kHertz},
};

constexpr DescriptionRow kDistortion[]{
    {"Stereo", "Stereo", kSwitch},
    {"DistType", "Curve", Choice(Choices::DistortionCurves)},
    {"Drive", "Drive", kDecibels},
    {"OutputGain", "Output Gain", kDecibels},
    {"AutoComp", "Level Compensation", kSwitch},
};

/// Parts of the distortion that have no name of their own.
constexpr DescriptionRow kDistortionParts[]{
    {"InGainCompensated", "Input Gain", kDecibels},
    DryWet("DryWet"),
};

constexpr DescriptionRow kCompressor[]{
    DryWet("Wet"),
    {"InGainCompensated", "Working Level", kDecibels},
    {"InputGain", "Input Gain", kDecibels},
    {"OutputGain", "Output Gain", kDecibels},
    {"Attack", "Attack", kMilliseconds},
    {"Release", "Release", kMilliseconds},
    {"Threshold", "Threshold", kDecibels},
    {"Ratio", "Ratio", Number(Unit::Ratio)},
    {"RatioInfinite", "Infinite Ratio", kSwitch},
    {"KneeWidth", "Knee", kDecibels},
    {"Makeup", "Makeup Gain", kSwitch},
    {"StereoMode", "Linked Channels", kSwitch},
    {"OutGainReduction", "Gain Reduction", kPercent, kOutput},
    {"LevelMeasureSmoothAR", "Smooth Detector", kSwitch},
    {"LevelMeasureAtMs", "Detector Attack", kMilliseconds},
    {"LevelMeasureReMs", "Detector Release", kMilliseconds},
    {"LookaheadEnable", "Look-Ahead", kSwitch},
    {"LookaheadTimeMs", "Look-Ahead Time", kMilliseconds},
};

constexpr DescriptionRow kDelay[]{
    {"RateType", "Time Sync", Choice(Choices::RateTypes)},
    {"DelayTimeMs", "Time (Free)", kMilliseconds},
    {"Feedback", "Feedback", kPercent},
    DryWet("Wet"),
    {"HPFreq", "Low Cut", kHertz},
    {"LPFreq", "High Cut", kHertz},
    {"StereoWidth", "Stereo Offset", kPercent},
    {"StereoWidthPP", "Ping-Pong Width", kPercent},
    {"StereoMode", "Stereo Mode", Choice(Choices::EchoStereoModes)},
    {"MidiSync", "Sync", kSwitch},
    {"RateSyncedType", "Note Type", Choice(Choices::NoteTypes)},
    {"DelayTimeSynced", "Time (Synced)", Choice(Choices::EchoTimes)},
    {"DelayFineMs", "Fine Time", kMilliseconds},
    {"VibratoMaxAmount", "Vibrato Depth", kMilliseconds},
};

constexpr DescriptionRow kOctaver[]{
    {"DelayTimeType", "Time Sync", Choice(Choices::RateTypes)},
    {"Mode", "Mode", Choice(Choices::OctaverModes)},
    {"Stereo", "Stereo", kSwitch},
    DryWet("DryWet"),
    {"DelayTimeMs", "Time (Free)", kMilliseconds},
    {"DelayTimeSynced", "Time (Synced)", Choice(Choices::EchoTimes)},
    {"Feedback", "Feedback", kPercent},
    {"PitchShift", "Pitch", kSemitones},
    {"Window", "Window", Choice(Choices::TapWindows)},
    {"Spray", "Spray", kMilliseconds},
    {"HPFreq", "Low Cut", kHertz},
    {"LPFreq", "High Cut", kHertz},
    {"MidiSync", "Sync", kSwitch, kDriven},
    {"RateSyncedType", "Note Type", Choice(Choices::NoteTypes), kDriven},
    {"DelayOffset", "Stereo Offset", kMilliseconds},
    {"Detune", "Detune", kCents},
};

/// The two shifters inside the octaver, which sets them.
constexpr DescriptionRow kPitchShiftDelay[]{
    {"Stereo", "Stereo", kSwitch},
    {"DelayTimeMs", "Time (Free)", kMilliseconds},
    {"DelayTimeSynced", "Time (Synced)", Choice(Choices::EchoTimes)},
    {"Feedback", "Feedback", kPercent},
    {"PitchShift", "Pitch", kSemitones},
    {"Window", "Window", Choice(Choices::TapWindows)},
    {"Spray", "Spray", kMilliseconds},
    {"HPFreq", "Low Cut", kHertz},
    {"LPFreq", "High Cut", kHertz},
    {"MidiSync", "Sync", kSwitch},
    {"RateSyncedType", "Note Type", Choice(Choices::NoteTypes)},
    {"DelayOffset", "Stereo Offset", kMilliseconds},
    {"Detune", "Detune", kCents},
    {"ModDelayConnected", "Time Modulated", kSwitch},
    {"ModOffsetConnected", "Offset Modulated", kSwitch},
};

constexpr DescriptionRow kTapeEcho[]{
    {"InputVolume", "Input Volume", kDecibels},
    {"DelayTime", "Time (Free)", kMilliseconds},
    {"DelayTimeFine", "Fine Time", kMilliseconds},
    {"Intensity", "Intensity", kPercent},
    DryWet("DryWet"),
    {"DelayTimeType", "Time Sync", Choice(Choices::RateTypes)},
    {"DelayTimeSynced", "Time (Synced)", Choice(Choices::EchoTimes)},
    {"DelayType", "Stereo Mode", Choice(Choices::EchoStereoModes)},
    {"StereoWidth", "Stereo Offset", kPercent},
    {"StereoWidthPP", "Ping-Pong Width", kPercent},
    {"LPFreq", "High Cut", kHertz},
    {"HPFreq", "Low Cut", kHertz},
    {"PeakMeter", "Overload", kSwitch, kOutput},
    {"ConfInGainCompensated", "Working Level", kDecibels},
};

constexpr DescriptionRow kChorus[]{
    DryWet("DryWet"),
    {"Delay", "Delay", kMilliseconds},
    {"Depth", "Depth", kMilliseconds},
    {"Freq", "Rate (Free)", kHertz},
    {"Feedback", "Feedback", kPercent},
    {"FBPolarity", "Feedback Polarity", Choice(Choices::FeedbackPolarities)},
    {"StereoMode", "Channels", Choice(Choices::ChannelModes)},
    {"Voices", "Voices", kCount},
    {"LFOShape", "Waveform", Choice(Choices::ChorusWaveforms)},
    {"MidiSync", "Sync", kSwitch},
    {"RateSyncedType", "Note Type", Choice(Choices::NoteTypes)},
    {"RateSynced", "Rate (Synced)", Choice(Choices::GeneratorRates)},
    {"LPFfc", "High Cut", kHertz},
    {"HPFfc", "Low Cut", kHertz},
    {"LPFOn", "High Cut On", kSwitch},
    {"HPFOn", "Low Cut On", kSwitch},
};

constexpr DescriptionRow kFlanger[]{
    {"Chorus_RateType", "Rate Sync", Choice(Choices::RateTypes)},
    {"MinDelay", "Delay", kMilliseconds},
    {"DepthFlanger", "Depth", kMilliseconds},
};

/// The chorus inside the flanger, which sets these two.
constexpr DescriptionRow kFlangerCore[]{
    {"Delay", "Core Delay", kMilliseconds, kDriven},
    {"Depth", "Core Depth", kMilliseconds, kDriven},
};

constexpr DescriptionRow kReverb[]{
    {"Predelay", "Predelay", kSeconds},
    {"E_Id1", "Input Diffusion 1", kPercent},
    {"E_Id2", "Input Diffusion 2", kPercent},
    {"Decay", "Decay", kPercent},
    {"E_Dd1", "Decay Diffusion 1", kPercent},
    {"E_Dd2", "Decay Diffusion 2", kPercent},
    {"Damping", "Damping", kPercent},
    {"E_Excursion", "Modulation Depth", kMilliseconds},
    {"E_MKFosc", "Modulation Rate", kHertz},
    {"E_MDFosc", "Modulation Detune", kPercent},
    {"E_Size", "Size", Number(Unit::Factor)},
    {"SmoothTimeDelay", "Glide", kSeconds},
    {"Freeze", "Freeze", kSwitch},
    {"InterpType", "Interpolation", kCount},
    {"LPBandWith", "High Cut", kHertz},
    {"HPBandWith", "Low Cut", kHertz},
    DryWet("Wet"),
    {"EarlyOn", "Early Reflections", kSwitch},
    {"EarlySize", "Early Size", kPercent},
    {"EarlyMix", "Early Mix", kPercent},
    {"InvertEarly", "Reversed Early Reflections", kSwitch},
    {"OutputGain", "Output Gain", kDecibels},
    {"MSMix", "Side Level", Number(Unit::Percent, 200.0)},  // 0.5 leaves the sides as they are
    {"SmoothTimeDelayCont", "Early Glide", kSeconds},
};

}  // namespace

DescriptionRows SlotRows() { return kSlot; }
DescriptionRows FilterRows() { return kFilter; }
DescriptionRows DistortionRows() { return kDistortion; }
DescriptionRows DistortionPartRows() { return kDistortionParts; }
DescriptionRows CompressorRows() { return kCompressor; }
DescriptionRows DelayRows() { return kDelay; }
DescriptionRows OctaverRows() { return kOctaver; }
DescriptionRows PitchShiftDelayRows() { return kPitchShiftDelay; }
DescriptionRows TapeEchoRows() { return kTapeEcho; }
DescriptionRows ChorusRows() { return kChorus; }
DescriptionRows FlangerRows() { return kFlanger; }
DescriptionRows FlangerCoreRows() { return kFlangerCore; }
DescriptionRows ReverbRows() { return kReverb; }

}  // namespace Quorvan::Host
