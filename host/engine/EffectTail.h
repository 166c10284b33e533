#pragma once

#include "host/engine/SlotReach.h"
#include "host/engine/TailEstimator.h"

namespace Quorvan::Host {

/// Share of the effect of a slot in a tail: until silence, a linear gain, is left of what it holds.
Tail EffectTail(const SlotReach& slot, double tempo, double silence);

}  // namespace Quorvan::Host
