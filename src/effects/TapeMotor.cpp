#include "effects/TapeMotor.h"

#include <algorithm>

namespace Quorvan::dsp {

namespace {

constexpr float kRiseFactor = 10.0f, kFallFactor = 5.0f;
constexpr float kSecondsPerFactor = 0.2f;
constexpr float kShortestTime = 9.99999996e-13f;

}  // namespace

void TapeMotor::Setup(float rate) {
    rise.time = static_cast<double>(std::max(kRiseFactor * kSecondsPerFactor, kShortestTime));
    fall.time = static_cast<double>(std::max(kFallFactor * kSecondsPerFactor, kShortestTime));
    for (SpaceEchoSmootherLPFDouble* smoother : {&rise, &fall}) {
        smoother->stepLength = 1;
        smoother->sampleRate = static_cast<double>(rate);
        smoother->UpdateCoefficients();
    }
}

void TapeMotor::Jump(float samples) {
    for (SpaceEchoSmootherLPFDouble* smoother : {&rise, &fall})
        smoother->target = smoother->current = static_cast<double>(samples);
    now = samples;
}

void TapeMotor::Follow(SpaceEchoSmootherLPFDouble& moving, SpaceEchoSmootherLPFDouble& resting,
                       float target) {
    moving.SetTarget(static_cast<double>(target));
    now = static_cast<float>(moving.Tick());
    resting.target = resting.current = static_cast<double>(now);
}

}  // namespace Quorvan::dsp
