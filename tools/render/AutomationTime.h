#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "tools/render/Meter.h"

namespace Quorvan::Tools {

/// What numbers without a unit count. A bare bar is its first beat.
enum class TimeUnit : uint8_t { Seconds, Beats, Bars };

/// A moment in an automation file: "1.5", "1.5 s", "250 ms", "4 beats", or "5:3.5", bar and beat.
struct AutomationTime {
    double time = 0.0;  ///< seconds, or quarter notes
    bool isBeat = false;

    /// Nothing where text is no time.
    static std::optional<AutomationTime> Read(std::string_view text, TimeUnit bare,
                                              const Meter& meter);
};

}  // namespace Quorvan::Tools
