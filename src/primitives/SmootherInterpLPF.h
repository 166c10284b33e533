#pragma once

#include "primitives/SmootherLPF.h"

namespace Quorvan::dsp {

/// One-pole low-pass that follows a straight ramp to the target instead of the jump, so that a
/// target given once a block makes no corners.
class SmootherInterpLPF : public SmootherLPF {
public:
    using SmootherLPF::SmootherLPF;

    float Tick() override {
        if (rampCounter + 1 < rampSteps) {
            rampValue += rampIncrement;
            ++rampCounter;
        } else {
            rampValue = target;
        }
        const double step = (rampValue - current) * coefficient;
        if (step >= threshold || -step >= threshold)
            current += step;
        else
            current = rampValue;
        return static_cast<float>(current);
    }
    void FillBlock(float* out, uint32_t count) override { FillBlockOf(*this, out, count); }
    /// A new ramp from where the present one stands.
    void SetTarget(float value) override;
    void SetStartAndTarget(float start, float end) override;
    void Reset(float value) override;

    /// Whether ticks change nothing any more: at rest, and with the ramp run to its end.
    bool HasArrived() const {
        return IsAtRest() && rampValue == target && rampCounter + 1 >= rampSteps;
    }

    uint32_t rampSteps = 1;  ///< ticks of a ramp, at least 1
    uint32_t rampCounter = 0;
    double rampIncrement = 0.0;
    double rampValue = 0.0;

private:
    void EndRamp() {
        rampCounter = rampSteps - 1;
        rampIncrement = 0.0;
    }
};

}  // namespace Quorvan::dsp
