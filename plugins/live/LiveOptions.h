#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Quorvan::Live {

/// What the command line asks for.
struct LiveOptions {
    std::string preset = "init";  ///< name of a preset, or a file
    std::optional<std::string> midiMap, state;
    std::vector<std::string> learn, setList, assign;
    std::optional<std::string> saveState;
    std::optional<double> tempo;
    std::optional<uint64_t> seed;
    std::string name = "Tesserae";
    bool connect = false;
    bool run = false;  ///< the song plays from the start
    bool headless = false;
    bool quiet = false;
};

}  // namespace Quorvan::Live
