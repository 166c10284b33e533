#pragma once

#include <optional>
#include <string_view>

namespace Quorvan::Tools {

/// A moment in an automation file: "1.5", "1.5 s", "250 ms" or "4 beats".
struct AutomationTime {
    double time = 0.0;  ///< seconds, or quarter notes
    bool isBeat = false;

    /// Numbers without a unit count beats where bareIsBeat is set, else seconds. Nothing where text
    /// is no time.
    static std::optional<AutomationTime> Read(std::string_view text, bool bareIsBeat);
};

}  // namespace Quorvan::Tools
