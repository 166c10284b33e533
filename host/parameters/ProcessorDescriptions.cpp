#include "host/parameters/ChoiceLists.h"
#include "host/parameters/DescriptionTables.h"

namespace Quorvan::Host {

namespace {

using namespace Form;
constexpr auto kControl = ParameterRole::Control;
constexpr auto kOutput = ParameterRole::Output;

constexpr DescriptionRow kProcessor[]{
    {"Bypass", "Bypass", kSwitch, kControl},
    {"Panic", "Panic", kSwitch, kControl},
    {"PresetLoading", "Preset Loading", kSwitch, kControl},
    {"GUI Visible", "Display Visible", kSwitch, kControl},
    {"OutputGain", "Wet Gain", kDecibels},
    {"Dry / Wet", "Dry / Wet", kPercent},
    {"Feedback", "Feedback", {.unit = Unit::Decibels, .silentBottom = true}},
    {"Granular Volume", "Granular Volume", kDecibels},
    {"Master Volume", "Master Volume", kDecibels},
    {"Macro #", "Macro #", kPercent},
    {"Transport Mute", "Mute While Stopped", kSwitch},
    {"Feedback_BigChunk", "Modulation Display", kBinary, kOutput},
    {"FX_Feedback_Chunk", "Effect Display", kBinary, kOutput},
    {"Direction_Feedback", "Shown Direction", kPercent, kOutput},
    {"Shape_Feedback", "Shown Shape", kPercent, kOutput},
    {"Pitch_Feedback", "Shown Pitch", kPercent, kOutput},
    {"RandomPitch_Feedback", "Shown Random Pitch", kPercent, kOutput},
    {"Size_Feedback", "Shown Size", kPercent, kOutput},
    {"RandomSize_Feedback", "Shown Random Size", kPercent, kOutput},
    {"Dest#_Assigned", "Destination # Assigned", kSwitch, kOutput},
    {"ToolTipUpdate", "Tool Tip Request", kBinary, kControl},
    {"ToolTipText", "Tool Tip", kBinary, kOutput},
};

constexpr DescriptionRow kSpatializer[]{
    {"Enable", "On", kSwitch},
    {"Trajectory", "Trajectory", Choice(Choices::Trajectories)},
    {"Rate UnSynced", "Rate (Free)", kHertz},
    {"Rate Synced", "Rate (Synced)", Choice(Choices::GeneratorRates)},
    {"Rate Type", "Rate Sync", Choice(Choices::RateTypes)},
    {"Amount", "Amount", kPercent},
    {"Distance", "Distance", kPercent},
    {"Invert", "Invert", kSwitch},
};

constexpr DescriptionRow kMeter[]{
    {"Level", "Level", kPercent, kOutput},
};

void AddGranular(std::vector<ModuleDescription>& modules) {
    // For people the density belongs to the grains, whatever clock makes it.
    modules.push_back({.prefix = "MoteWeaver_GranularPhaseHelper_",
                       .group = "Granular",
                       .rows = {DensityRows()}});
    modules.push_back({.prefix = "MoteWeaver_GranularPhaseHelper_",
                       .group = "Grain Clock",
                       .rows = {GeneratorRows()},
                       .driven = {"MidiSync", "RateSyncedType"}});
    modules.push_back({.prefix = "MoteWeaver_GranularPhaseHelperTexture_",
                       .group = "Texture Clock",
                       .rows = {TextureClockRows(), GeneratorRows()},
                       .allDriven = true});
    modules.push_back({.prefix = "MoteWeaver_SPPPhaseHelper_",
                       .group = "Song Clock",
                       .rows = {SongClockRows(), GeneratorRows()},
                       .allDriven = true});
    modules.push_back({.prefix = "MoteWeaver_StepSequencerGranular_",
                       .group = "Beat Sequencer",
                       .rows = {GranularSequencerRows(), GeneratorRows()},
                       .driven = {"MidiSync", "RateSynced", "RateSyncedType"}});
    modules.push_back({.prefix = "MoteWeaver_BitCrusher_",
                       .group = "Bit Crusher",
                       .rows = {BitCrusherRows()},
                       .allDriven = true});
    modules.push_back({.prefix = "MoteWeaver_", .group = "Granular", .rows = {GranularRows()}});
}

void AddModulators(std::vector<ModuleDescription>& modules) {
    modules.push_back(
        {.prefix = "EnvFollower_", .group = "Envelope Follower", .rows = {EnvelopeFollowerRows()}});
    modules.push_back({.prefix = "Envelope Follower ",
                       .group = "Envelope Follower",
                       .rows = {FollowerInputRows()}});
    for (const char* number : {"1", "2", "3"})
        modules.push_back({.prefix = std::string("Function") + number + "_",
                           .group = std::string("Function ") + number,
                           .rows = {FunctionRows(), GeneratorRows()},
                           .driven = {"MidiSync", "RateSyncedType"}});
    for (const char* axis : {"X", "Y"})
        modules.push_back(
            {.prefix = std::string("LFO_Stereo_") + axis + "_",
             .group = std::string("Spatializer LFO ") + axis,
             .rows = {LfoRows(), GeneratorRows()},
             .driven = {"MidiSync", "RateUnSynced", "RateSynced", "RateSyncedType", "PhaseInit"}});
    modules.push_back({.prefix = "StepSeq_",
                       .group = "Step Sequencer",
                       .rows = {StepSequencerRows(), GeneratorRows()},
                       .driven = {"MidiSync", "RateSyncedType"}});
}

void AddSlot(std::vector<ModuleDescription>& modules, const std::string& slot) {
    const auto add = [&](const char* path, const char* called, std::vector<DescriptionRows> rows,
                         std::vector<std::string_view> driven = {}, bool allDriven = false) {
        modules.push_back(
            {slot + "_" + path, slot + called, std::move(rows), std::move(driven), allDriven});
    };
    add("MultiModeFilter_", " Filter", {FilterRows()});
    add("MultiDist_", " Distortion", {DistortionRows()});
    add("Compressor_", " Compressor", {CompressorRows()});
    add("Delay_", " Delay", {DelayRows()}, {"MidiSync", "RateSyncedType"});
    add("OctaverDelay_PitchShiftDelay1_", " Octaver Shifter 1", {PitchShiftDelayRows()}, {}, true);
    add("OctaverDelay_PitchShiftDelay2_", " Octaver Shifter 2", {PitchShiftDelayRows()}, {}, true);
    add("OctaverDelay_", " Octaver", {OctaverRows()});
    add("TapeEcho_", " Tape Echo", {TapeEchoRows()});
    add("Chorus_", " Chorus", {ChorusRows()});
    add("Flanger_Chorus_", " Flanger", {FlangerCoreRows(), ChorusRows()},
        {"MidiSync", "RateSyncedType"});
    add("Flanger_", " Flanger", {FlangerRows()});
    add("Reverb_", " Reverb", {ReverbRows()});
    add("", " Distortion", {DistortionPartRows()});
    add("", "", {SlotRows()});
}

std::vector<ModuleDescription> BuildModules() {
    std::vector<ModuleDescription> modules;
    AddGranular(modules);
    AddModulators(modules);
    AddSlot(modules, "FX1");
    AddSlot(modules, "FX2");
    modules.push_back(
        {.prefix = "Limiter_", .group = "Limiter", .rows = {CompressorRows()}, .allDriven = true});
    modules.push_back({.prefix = "MasterVuL_", .group = "Meter Left", .rows = {MeterRows()}});
    modules.push_back({.prefix = "MasterVuR_", .group = "Meter Right", .rows = {MeterRows()}});
    modules.push_back(
        {.prefix = "Spatializer ", .group = "Spatializer", .rows = {SpatializerRows()}});
    modules.push_back({.prefix = "", .group = "Main", .rows = {ProcessorRows()}});
    return modules;
}

}  // namespace

DescriptionRows ProcessorRows() { return kProcessor; }
DescriptionRows SpatializerRows() { return kSpatializer; }
DescriptionRows MeterRows() { return kMeter; }

const std::vector<ModuleDescription>& ModuleDescriptions() {
    static const std::vector<ModuleDescription> modules = BuildModules();
    return modules;
}

}  // namespace Quorvan::Host
