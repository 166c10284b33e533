#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "tools/render/Recipe.h"

namespace Quorvan::Tools {

/// What is known of a sound file: its form, its tags, and how it was made where this program made
/// it.
class SoundFacts {
public:
    /// Throws Failure where the file can't be used.
    explicit SoundFacts(const std::filesystem::path& file);

    /// A table for people.
    std::string Text() const;
    /// An object for programs.
    std::string Json() const;

private:
    std::filesystem::path name;
    std::string format;
    double rate = 0.0;  ///< hertz
    uint32_t channels = 0;
    std::optional<uint64_t> frames;
    std::map<std::string, std::string> tags;
    std::string comment;
    std::optional<Recipe> recipe;
};

}  // namespace Quorvan::Tools
