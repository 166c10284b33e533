#pragma once

#include <cmath>

namespace Quorvan::dsp {

/// Linear gain of a level in decibels.
inline float DecibelsToGain(float decibels) { return std::pow(10.0f, decibels * 0.05f); }

}  // namespace Quorvan::dsp
