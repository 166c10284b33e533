#pragma once

#include "host/engine/ParameterReach.h"
#include "host/engine/TailEstimator.h"

namespace Quorvan::Host {

/// Share of the granular engine in a tail: its tape, the grains that read it, and the feedback loop
/// around both.
Tail GranularTail(const ParameterReach& reach, double tempo);

}  // namespace Quorvan::Host
