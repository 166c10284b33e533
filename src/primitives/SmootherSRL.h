#pragma once

#include "primitives/Smoother.h"

namespace Quorvan::dsp {

/// Slew-rate limiter: covers the distance range in time seconds, in equal steps.
class SmootherSRL : public Smoother {
public:
    using Smoother::Smoother;

    float Tick() override {
        if (current == target)
            return static_cast<float>(current);
        const double distance = target - current;
        double next = current - maxStep;
        if (distance > maxStep)
            next = current + maxStep;
        else if (distance > -maxStep)
            next = target;
        const auto rounded = static_cast<float>(next);
        current = static_cast<double>(rounded);
        return rounded;
    }
    void FillBlock(float* out, uint32_t count) override { FillBlockOf(*this, out, count); }
    void UpdateCoefficients() override;

    double range = 1.0;    ///< distance covered in time
    double maxStep = 0.0;  ///< largest move of one tick
};

}  // namespace Quorvan::dsp
