#pragma once

#include "granular/CaptureBuffer.h"
#include "granular/MarkerRing.h"

namespace Quorvan::dsp {

/// Moves a grain's start to a transient or to a line of the loop's grid.
struct StartQuantizer {
    /// The transient that start, in samples, belongs to. The ring isn't empty.
    static double ToTransient(double start, const CaptureBuffer& capture,
                              const MarkerRing& markers);
    /// The nearest of gridSize lines, or in the cell behind the write head the next one up.
    static double ToGrid(double start, const CaptureBuffer& capture, uint32_t gridSize);
};

}  // namespace Quorvan::dsp
