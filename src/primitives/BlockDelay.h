#pragma once

#include <cstdint>

#include "primitives/DelayLine.h"

namespace Quorvan::dsp {

/// Moves count samples through a ring: what was written delay samples ago comes out, and then the
/// input goes in. count is at most the ring's size, delay from 0 to its size; a delay of 0 gives
/// the oldest sample of all. Not in place.
void RunBlockDelay(DelayLine& line, uint32_t delay, const float* in, float* out, uint32_t count);

}  // namespace Quorvan::dsp
