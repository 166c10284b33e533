#pragma once

#include "effects/SpaceEchoSmootherDouble.h"

namespace Quorvan::dsp {

/// One-pole low-pass that ends its way with a jump: once the distance left is below the first step
/// towards its target, it stands on the target.
class SpaceEchoSmootherLPFDouble final : public SpaceEchoSmootherDouble {
public:
    double Tick() override;
    /// Measures the first step. Leaves current where it is.
    void SetTarget(double value) override;
    void UpdateCoefficients() override;

    double coefficient = 0.0;
    double threshold = 1e-6;  ///< distance below which the way ends
};

}  // namespace Quorvan::dsp
