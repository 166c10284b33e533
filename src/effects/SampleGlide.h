#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace Quorvan::dsp {

/// One-pole in double precision that fills a block with its way to a target, one value a sample,
/// and rests on the target exactly once its steps are below a threshold.
struct SampleGlide {
    bool IsAtRest() const { return current == target; }
    void Fill(float* out, uint32_t count, double coefficient, double threshold) {
        if (IsAtRest()) {
            std::fill_n(out, count, static_cast<float>(current));
            return;
        }
        for (uint32_t i = 0; i < count; ++i) {
            const double step = (target - current) * coefficient;
            current = std::abs(step) >= threshold ? current + step : target;
            out[i] = static_cast<float>(current);
        }
    }

    double current = 0.0;
    double target = 0.0;
};

}  // namespace Quorvan::dsp
