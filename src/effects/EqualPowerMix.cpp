#include "effects/EqualPowerMix.h"

#include <algorithm>
#include <cmath>

#include "primitives/PolynomialSine.h"
#include "primitives/UnpairedSine.h"

namespace Quorvan::dsp {

namespace {

constexpr float kQuarterTurn = 1.5707964f;  // radians

}  // namespace

void EqualPowerMix::Setup(float rate, uint32_t blockSize) {
    smoother.stepLength = 1;
    smoother.sampleRate = static_cast<double>(rate);
    smoother.rampSteps = blockSize;
    smoother.UpdateCoefficients();
    for (AlignedVector* buffer : {&mix, &dryGain, &wetGain})
        buffer->assign(blockSize, 0.0f);
}

void EqualPowerMix::Reset(float value) {
    smoother.Reset(value);
    gainsValid = false;
}

void EqualPowerMix::Fill(uint32_t count) {
    const bool atRest = smoother.IsAtRest();
    if (!atRest) {
        FillMoving(count);
    } else if (!gainsValid) {
        // For the full size, since a longer block may come next.
        const float angle = static_cast<float>(smoother.current) * kQuarterTurn;
        std::fill(dryGain.begin(), dryGain.end(), std::cos(angle));
        std::fill(wetGain.begin(), wetGain.end(), UnpairedSine(angle));
    }
    gainsValid = atRest;
}

void EqualPowerMix::FillMoving(uint32_t count) {
    smoother.FillBlock(mix.data(), count);
    for (uint32_t i = 0; i < count; ++i) {
        const float turns = 0.25f * mix[i];
        dryGain[i] = PolynomialSineOfQuarter(0.25f - turns);
        wetGain[i] = PolynomialSineOfQuarter(turns);
    }
}

}  // namespace Quorvan::dsp
