#include "effects/TapSweep.h"

#include <algorithm>
#include <cmath>

namespace Quorvan::dsp {

namespace {

// The span over the shift is a fit: two straight lines, blended by a power of the shift.
constexpr float kConstantUpTo = 2.63155f;      // semitones
constexpr float kShortestSpan = 0.029985627f;  // seconds
constexpr float kLowLine = 0.02872614f, kLowSlope = 0.008806685f;
constexpr float kHighLine = 0.0002163307f, kHighSlope = 0.0100279f;
constexpr float kBlendScale = 0.34744045f, kBlendPower = 8.770802f;
constexpr float kOctavesPerSemitone = 0.083333336f;
constexpr float kFadeSeconds = 0.498f;  // overlap is half full at the rate of one over this

float SpanAt(float shift) {
    if (shift <= kConstantUpTo)
        return kShortestSpan;
    const float blend = std::pow(kBlendScale * shift, kBlendPower) + 1.0f;
    return (kLowLine - kLowSlope * shift) / blend + kHighSlope * shift - kHighLine;
}

}  // namespace

TapSweep::TapSweep(float semitones)
    : span(SpanAt(std::abs(semitones))),
      rate((std::exp2(semitones * kOctavesPerSemitone) - 1.0f) / span) {
    const float o = kFadeSeconds * std::abs(rate);
    overlap = std::clamp(o / (o + 1.0f), 0.0f, 0.5f);
}

}  // namespace Quorvan::dsp
