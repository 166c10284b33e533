#pragma once

#include "primitives/Smoother.h"

namespace Quorvan::dsp {

/// One-pole low-pass; within 0.7 % of its target after time seconds, which are five time constants.
/// Comes to rest exactly, when its steps become too small to matter.
class SmootherLPF : public Smoother {
public:
    using Smoother::Smoother;

    float Tick() override {
        const double step = (target - current) * coefficient;
        if (step >= threshold || -step >= threshold)
            current += step;
        else
            current = target;
        return static_cast<float>(current);
    }
    void FillBlock(float* out, uint32_t count) override { FillBlockOf(*this, out, count); }
    void SetTarget(float value) override;
    void UpdateCoefficients() override;

    double coefficient = 0.0;
    double threshold = 1e-12;  ///< steps below this end the glide

    /// The threshold over the target, and its least.
    static constexpr double kRelativeThreshold = 1e-12, kLeastThreshold = 1e-20;

protected:
    static double ThresholdFor(double value);
};

}  // namespace Quorvan::dsp
