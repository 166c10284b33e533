#include "effects/TapSweep.h"

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

/// What takes a call: the power in the blend and the speed. Neighbours are often alike.
struct Powers {
    Powers(const float* semitones, uint32_t count) {
        for (uint32_t i = 0; i < count; ++i) {
            const bool isRepeat = i > 0 && semitones[i] == semitones[i - 1];
            const float shift = std::abs(semitones[i]);
            speed[i] = isRepeat ? speed[i - 1] : std::exp2(semitones[i] * kOctavesPerSemitone);
            blend[i] = isRepeat                 ? blend[i - 1]
                       : shift <= kConstantUpTo ? 0.0f
                                                : std::pow(kBlendScale * shift, kBlendPower);
        }
    }

    float speed[TapSweep::kMost], blend[TapSweep::kMost];
};

}  // namespace

void TapSweep::Fill(const float* semitones, uint32_t count) {
    const Powers powers(semitones, count);
    for (uint32_t i = 0; i < count; ++i) {
        const float shift = std::abs(semitones[i]);
        const float blended = (kLowLine - kLowSlope * shift) / (powers.blend[i] + 1.0f) +
                              kHighSlope * shift - kHighLine;
        span[i] = shift <= kConstantUpTo ? kShortestSpan : blended;
        rate[i] = (powers.speed[i] - 1.0f) / span[i];
        const float o = kFadeSeconds * std::abs(rate[i]);
        const float share = o / (o + 1.0f);
        overlap[i] = share > 0.5f ? 0.5f : share;
    }
}

}  // namespace Quorvan::dsp
