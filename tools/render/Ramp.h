#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace Quorvan::Tools {

/// How automation reaches a place: at once, or on a way from the place before.
enum class Ramp : uint8_t {
    Step,
    Linear,      ///< equal ways in equal times
    Exponential  ///< equal ratios in equal times; below 0.01 it sees 0.01
};

/// "linear", "exponential", "step" or nothing at all, which is a step; nothing for other texts.
std::optional<Ramp> ReadRamp(std::string_view text);

/// Where a ramp is at a share 0..1 of its time. The ends are exact.
double RampValue(Ramp ramp, double from, double to, double share);

/// The mean of a ramp over a part of it, between whose ends it goes from one value to another.
double RampMean(Ramp ramp, double from, double to);

}  // namespace Quorvan::Tools
