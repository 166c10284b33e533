#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "effects/PiecewiseCurve.h"

namespace Quorvan::dsp {

/// The static curves of the distortion, one set for the process.
///
///   0 rational saturation      5 two sides, straight      9 gap behind a bump
///   1 cubic soft clip          6 ripple                   10 bulge
///   2 hard clip                7 fold, two sides          11 plateau and step
///   3 exponential, open below  8 staircase of 16          12 notches
///   4 two sides, falling ends
class DistortionCurves {
public:
    static constexpr uint32_t kCount = 13;

    /// Built at the first call, which therefore belongs into a constructor.
    static const DistortionCurves& Instance();

    /// Shapes count samples in place.
    void Apply(int32_t type, float* samples, uint32_t count) const;

private:
    DistortionCurves();

    std::vector<PiecewiseCurve> piecewise;
    std::array<const PiecewiseCurve*, kCount> curves{};  ///< null: a formula of its own
};

}  // namespace Quorvan::dsp
