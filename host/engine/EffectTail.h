#pragma once

#include <cstdint>

#include "host/engine/ParameterReach.h"
#include "host/engine/TailEstimator.h"

namespace Quorvan::Host {

/// Share of the effect in slot 1 or 2 in a tail.
Tail EffectTail(const ParameterReach& reach, double tempo, uint32_t slot);

}  // namespace Quorvan::Host
