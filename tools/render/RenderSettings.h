#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tools/picture/LevelScale.h"
#include "tools/render/Meter.h"

namespace Quorvan::Tools {

/// What a render is asked for: the command line in order.
struct RenderSettings {
    std::filesystem::path input;      ///< "-" is standard input
    std::filesystem::path output;     ///< "-" is standard output, as with the other results
    std::optional<uint32_t> rawRate;  ///< hertz; the input has no header then (RawSound)
    uint32_t rawChannels = 2;
    std::optional<std::filesystem::path> sideChain;
    std::optional<std::filesystem::path> automation;
    std::optional<std::filesystem::path> picture;
    std::string pictureFrom, pictureTo;  ///< moments as in automation; empty for the ends
    LevelForm pictureLevels = LevelForm::Auto;
    bool pictureModulation = false;  ///< show modulation also where nothing is routed
    std::optional<std::filesystem::path> modulationCsv;
    std::vector<std::string> modulationDestinations;  ///< readable names, for the CSV

    std::string preset = "init";                      ///< a factory preset's name, or a file
    std::vector<std::string> assignments;             ///< NAME=POSITION
    std::optional<std::filesystem::path> savePreset;  ///< file for the sound that both make

    std::optional<double> tempo;  ///< beats per minute; else the preset's, else 120
    bool playing = true;
    double startBeat = 0.0;          ///< quarter notes
    Meter meter;                     ///< in which bars count
    std::optional<double> tail;      ///< seconds; else as long as the sound lasts
    std::optional<double> tailFade;  ///< seconds; else 2, or none where the tail is asked for
    std::optional<uint64_t> seed;    ///< else one of chance, which the summary tells
    std::optional<uint32_t> rate;    ///< hertz; else the input's
    std::string format;              ///< as AudioFormat::Choose takes it
    bool mono = false;               ///< one output channel

    bool force = false;    ///< replace files that exist
    bool progress = true;  ///< show a bar where there is a terminal
    /// Of the sound; a picture tells it in any case.
    bool measuresLoudness = true;
    /// One of so many that no file is looked for by reading its whole folder.
    bool isOneOfMany = false;
};

}  // namespace Quorvan::Tools
