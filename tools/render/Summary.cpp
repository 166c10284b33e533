#include "tools/render/Summary.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include <nlohmann/json.hpp>

#include "host/parameters/NumberText.h"
#include "tools/support/Numbers.h"
#include "tools/support/StandardStreams.h"

namespace Quorvan::Tools {

namespace {

/// Words of the JSON for the values of TailEnd.
constexpr std::array<const char*, 4> kTailEnds{"asked", "silence", "fade", "cut"};

double Decibels(float level) {
    return level > 0.0f ? 20.0 * std::log10(static_cast<double>(level))
                        : -std::numeric_limits<double>::infinity();
}

}  // namespace

std::string Summary::PeakText() const {
    return Host::FormatNumber(Decibels(peak), Host::Unit::Decibels);
}

std::string Summary::LoudnessText() const {
    return loudness ? Fixed(*loudness, 1) + " LUFS" : "not measurable (too short or too quiet)";
}

std::string Summary::TailText() const {
    const std::string still = ", still sounding " + Fixed(tailLimit, 0) + " s behind the input: ";
    if (tailEnd == TailEnd::Fade)
        return still + "faded out in the last " + Fixed(tailFade, 1) + " s";
    return tailEnd == TailEnd::Cut ? still + "cut off" : "";
}

std::string Summary::Line() const {
    std::string line = StandardStreams::Heading(output) + ": " + Fixed(seconds, 2) + " s, peak " +
                       PeakText() + ", loudness " + LoudnessText() + ", " + Grouped(grains) +
                       " grains, CPU " + Fixed(100.0 * cpuShare, 1) + " % of real time, seed " +
                       std::to_string(seed);
    const auto add = [&line](uint64_t count, const std::string& what) {
        if (count > 0)
            line += ", " + Grouped(count) + " " + what;
    };
    add(badInputs, "NaN or infinite input samples taken as 0");
    add(badSideChain, "NaN or infinite side-chain samples taken as 0");
    add(badOutputs, "NaN or infinite output samples taken as 0");
    add(clipped, "samples clipped");
    return line + TailText();
}

std::string Summary::Json() const {
    nlohmann::ordered_json json;
    json["output"] = output.string();
    json["format"] = format;
    json["preset"] = preset;
    if (!picture.empty())
        json["picture"] = picture.string();
    if (!modulationCsv.empty())
        json["modulationCsv"] = modulationCsv.string();
    if (!savedPreset.empty())
        json["savedPreset"] = savedPreset.string();
    json["seed"] = seed;
    json["rate"] = rate;
    json["channels"] = channels;
    json["seconds"] = seconds;
    json["inputSeconds"] = inputSeconds;
    json["tailSeconds"] = std::max(0.0, seconds - inputSeconds);
    json["tailEnd"] = kTailEnds[static_cast<size_t>(tailEnd)];
    json["tempo"] = tempo;
    json["latencyFrames"] = latencyFrames;
    json["peakDb"] = peak > 0.0f ? nlohmann::ordered_json(Decibels(peak)) : nullptr;
    json["loudnessLufs"] = loudness ? nlohmann::ordered_json(*loudness) : nullptr;
    json["grains"] = grains;
    json["cpuShare"] = cpuShare;
    json["elapsedSeconds"] = elapsed;
    json["badInputSamples"] = badInputs;
    json["badSideChainSamples"] = badSideChain;
    json["badOutputSamples"] = badOutputs;
    json["clippedSamples"] = clipped;
    json["warnings"] = warnings;
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace Quorvan::Tools
