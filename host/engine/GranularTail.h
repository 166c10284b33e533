#pragma once

#include "host/engine/ParameterReach.h"
#include "host/engine/TailEstimator.h"

namespace Quorvan::Host {

/// The most that grains which sound at once raise the level of what they read by, a linear gain.
double GranularGain(const ParameterReach& reach, double tempo);

/// Share of the granular engine in a tail: its tape, the grains that read it, and the feedback loop
/// around both, until silence, a linear gain, is left of what they hold. loop is the tail of the
/// effects in the loop, and loopGain what they raise a level by.
Tail GranularTail(const ParameterReach& reach, double tempo, double silence, const Tail& loop,
                  double loopGain);

/// Whether anything comes back into the loop.
bool FeedbackIsOpen(const ParameterReach& reach);

}  // namespace Quorvan::Host
