#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/picture/Axis.h"
#include "tools/render/Meter.h"
#include "tools/render/TempoMap.h"

namespace Quorvan::Tools {

/// "1:05", "0:02.5", "1:00:00": minutes and seconds, with so many decimals of the seconds.
std::string ClockText(double seconds, int decimals);

/// Marks at round times between two moments, in seconds; at most about count of them.
std::vector<Tick> ClockTicks(double from, double to, size_t count);

/// Marks at bar lines, labelled "5", or where few bars are in sight also at their beats, labelled
/// "5:3". Every second, fourth, ... bar where they would be more than count.
std::vector<Tick> BarTicks(const TempoMap& song, const Meter& meter, double from, double to,
                           size_t count);

}  // namespace Quorvan::Tools
