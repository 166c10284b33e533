#pragma once

#include <vector>

#include "tools/picture/Axis.h"

namespace Quorvan::Tools {

/// The time axis that all diagrams of a picture share, in seconds of the render.
struct TimeScale {
    Axis axis;
    std::vector<Tick> clock;  ///< minutes and seconds
    std::vector<Tick> bars;   ///< of the song; none where it stands still
};

}  // namespace Quorvan::Tools
