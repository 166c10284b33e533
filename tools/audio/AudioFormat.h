#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace Quorvan::Tools {

/// How a sound file is written: its container, and the numbers in it.
struct AudioFormat {
    /// Numbers are rounded to so many bits; 0: they go in as floats.
    uint32_t bits = 24;
    int code = 0;  ///< as libsndfile counts formats
    bool isOgg = false;
    std::string text;  ///< for people: "WAV, 24 bit"

    /// The format for a file of this name. wanted holds a container (wav, aiff, flac, ogg, caf,
    /// raw), an encoding (16, 24, 32, float, vorbis, opus), both with a "-" between, or nothing.
    /// The container is then that of the name's ending, WAV on standard output; the encoding 24
    /// bits, Vorbis in OGG, floats in raw. Raw is low byte first. Throws Failure where there is no
    /// such format, or it can't hold that sound.
    static AudioFormat Choose(const std::filesystem::path& name, const std::string& wanted,
                              double rate, uint32_t channels);

    /// The containers and encodings that wanted can hold.
    static std::vector<std::string> Names();
};

}  // namespace Quorvan::Tools
