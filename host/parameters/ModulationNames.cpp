#include "host/parameters/ModulationNames.h"

#include <algorithm>
#include <array>

#include "host/parameters/NameDistance.h"
#include "host/parameters/NumberText.h"
#include "host/parameters/Sentence.h"
#include "host/parameters/ShellIndex.h"
#include "processor/ProcessorInternals.h"

namespace Quorvan::Host {

namespace {

/// Destinations of an effect slot, without the slot's name.
constexpr std::array kSlotDestinations{
    "Dry / Wet",          "Filter Freq",          "Filter Resonance",    "Distortion Drive",
    "Compressor Release", "Compressor Threshold", "Compressor Ratio",    "Delay Time",
    "Delay Feedback",     "Delay Width",          "Delay Fine Time",     "Octaver Time",
    "Octaver Feedback",   "Octaver Pitch",        "Octaver Spray",       "Octaver Offset",
    "Octaver Detune",     "Tape Echo Time",       "Tape Echo Fine Time", "Tape Echo Intensity",
    "Tape Echo Input",    "Tape Echo Width",      "Chorus Rate",         "Chorus Feedback",
    "Flanger Rate",       "Flanger Feedback",     "Reverb Decay",        "Reverb Size",
    "Reverb Predelay",    "Reverb Damping"};

std::vector<std::string> BuildDestinations() {
    std::vector<std::string> names{"Dry / Wet",
                                   "Feedback",
                                   "Granular Volume",
                                   "Spatializer Rate",
                                   "Spatializer Amount",
                                   "Spatializer Distance",
                                   "Pitch",
                                   "Random Pitch",
                                   "Grain Shape",
                                   "Grain Size",
                                   "Random Size",
                                   "Density",
                                   "Texture Density",
                                   "Random Density",
                                   "Direction",
                                   "Random Pan",
                                   "Width",
                                   "Persistence",
                                   "Freeze",
                                   "Play Head",
                                   "Grid Size",
                                   "Spray",
                                   "Grain Trigger",
                                   "Transient Sensitivity",
                                   "Random Fine Pitch",
                                   "Random Layers",
                                   "Envelope Gain",
                                   "Function 1 Rate",
                                   "Function 2 Rate",
                                   "Function 3 Rate",
                                   "Function 1 Scale",
                                   "Function 2 Scale",
                                   "Function 3 Scale",
                                   "Step Sequencer Rate",
                                   "Step Sequencer Scale"};
    for (const char* slot : {"FX1 ", "FX2 "}) {
        for (const char* name : kSlotDestinations)
            names.push_back(std::string(slot) + name);
    }
    return names;
}

const std::vector<std::string>& Sources() {
    static const std::vector<std::string> names{
        "Envelope Follower", "Function 1", "Function 2", "Function 3",
        "Step Sequencer",    "Macro 1",    "Macro 2"};
    return names;
}

const std::vector<std::string>& Destinations() {
    static const std::vector<std::string> names = BuildDestinations();
    return names;
}

std::optional<uint32_t> FindIn(const std::vector<std::string>& names, std::string_view name) {
    const std::string wanted = Lower(Trim(name));
    const auto found = std::find_if(names.begin(), names.end(), [&](const std::string& candidate) {
        return Lower(candidate) == wanted;
    });
    if (found == names.end())
        return std::nullopt;
    return static_cast<uint32_t>(found - names.begin());
}

std::string UnknownIn(const std::vector<std::string>& names, std::string_view name,
                      const std::string& what, const std::string& advice) {
    const std::string suggestion = DidYouMean(NearestNames(name, names, 3));
    return "There is no modulation " + what + " called " + Quoted(name) + ". " +
           (suggestion.empty() ? advice : suggestion);
}

uint32_t Cell(uint32_t source, uint32_t destination) {
    return destination * kModulationSources + source;
}

}  // namespace

const std::string& SourceName(uint32_t source) { return Sources()[source]; }
const std::string& DestinationName(uint32_t destination) { return Destinations()[destination]; }

std::optional<uint32_t> FindSource(std::string_view name) { return FindIn(Sources(), name); }
std::optional<uint32_t> FindDestination(std::string_view name) {
    return FindIn(Destinations(), name);
}

std::string UnknownSource(std::string_view name) {
    return UnknownIn(Sources(), name, "source",
                     "Use \"Envelope Follower\", \"Function 1\" to \"Function 3\", "
                     "\"Step Sequencer\", \"Macro 1\" or \"Macro 2\".");
}
std::string UnknownDestination(std::string_view name) {
    return UnknownIn(Destinations(), name, "destination",
                     "Use a name from the list of destinations, such as \"Pitch\" or "
                     "\"FX1 Filter Freq\".");
}

uint32_t AmountIndex(uint32_t source, uint32_t destination) {
    return kFirstAmountIndex + Cell(source, destination);
}
uint32_t ActivatedIndex(uint32_t source, uint32_t destination) {
    return kFirstActivatedIndex + Cell(source, destination);
}
float AmountPosition(float amount) { return std::clamp(0.5f * (amount + 1.0f), 0.0f, 1.0f); }
float AmountOfPosition(float position) { return 2.0f * position - 1.0f; }

uint32_t TargetOfDestination(Processor::IProcessor& processor, uint32_t destination) {
    return Processor::TargetOfRow(processor, destination);
}

}  // namespace Quorvan::Host
