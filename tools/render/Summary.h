#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tools/render/TailPlan.h"

namespace Quorvan::Tools {

/// What came of a render.
struct Summary {
    std::filesystem::path output;
    std::string format;                   ///< for people: "WAV, 24 bit"
    std::string preset;                   ///< its name
    std::filesystem::path picture;        ///< empty where there is none
    std::filesystem::path modulationCsv;  ///< likewise
    std::filesystem::path savedPreset;    ///< likewise
    uint64_t seed = 0;

    double rate = 0.0;  ///< hertz
    uint32_t channels = 0;
    double seconds = 0.0;  ///< length of the output
    double inputSeconds = 0.0;
    TailEnd tailEnd = TailEnd::Asked;
    double tailLimit = 0.0;  ///< seconds that the output may go on behind the input
    double tailFade = 0.0;   ///< seconds of the fade ahead of that limit
    double tempo = 0.0;
    uint32_t latencyFrames = 0;      ///< taken off the front
    float peak = 0.0f;               ///< linear
    std::optional<double> loudness;  ///< LUFS
    uint64_t grains = 0;             ///< started; left and right ones count for themselves
    double cpuShare = 0.0;           ///< processor time over length of what was processed
    double engineSeconds = 0.0;      ///< processor time of the engine
    double elapsed = 0.0;            ///< seconds that the whole took
    uint64_t badInputs = 0;  ///< samples of the input that were no finite numbers, taken as 0
    uint64_t badSideChain = 0;
    uint64_t badOutputs = 0;
    uint64_t clipped = 0;  ///< samples beyond full scale, held there
    std::vector<std::string> warnings;

    /// One line for people.
    std::string Line() const;
    /// An object for programs.
    std::string Json() const;
    /// "-3.2 dB", or "-inf dB" for silence.
    std::string PeakText() const;
    /// "-18.3 LUFS"; a word where it could not be measured.
    std::string LoudnessText() const;

private:
    /// What there is to say of a sound that had not ended; empty for others.
    std::string TailText() const;
};

}  // namespace Quorvan::Tools
