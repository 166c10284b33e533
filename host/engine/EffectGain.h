#pragma once

#include "host/engine/SlotReach.h"

namespace Quorvan::Host {

/// The most that the effect of a slot raises the level of a steady sound by, a linear gain of 1 or
/// more: an upper bound at whatever frequency, for quiet sounds too, which a compressor or a
/// distortion raises most.
double EffectGain(const SlotReach& slot);

/// The same for one round of an effect's own echo; below 1 the echo dies away.
double OctaverLoopGain(const SlotReach& slot);
double TapeLoopGain(const SlotReach& slot);
double CombLoopGain(const SlotReach& slot);

}  // namespace Quorvan::Host
