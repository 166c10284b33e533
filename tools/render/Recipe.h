#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/render/RenderSettings.h"

namespace Quorvan::Tools {

/// How a render was made, as one line for the comment of its file. Behind the version stand the
/// options that make the same sound of the same input again:
///
///     Tesserae 1.0.0: --preset dense-cloud --seed 7 --set "Feedback=-6 dB"
///
/// Files that took part go by their names without folders.
struct Recipe {
    std::string version;
    std::vector<std::string> options;  ///< as a command line gives them

    /// seed is the one in force, which the settings need not name.
    static Recipe Of(const RenderSettings& settings, uint64_t seed);
    /// The last recipe among the lines of a comment.
    static std::optional<Recipe> Find(std::string_view comment);

    std::string Line() const;
    /// What follows an option; empty where it is not there.
    std::string ValueOf(std::string_view option) const;
    /// The options between quotes where the shell would need them.
    std::string OptionsText() const;
};

}  // namespace Quorvan::Tools
