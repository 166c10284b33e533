#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace Quorvan::dsp {

/// One-pole in double precision that fills a block with its way to a target, one value a sample,
/// and rests on the target exactly once its steps are below a threshold.
struct SampleGlide {
    bool IsAtRest() const { return current == target; }
    void Fill(float* out, uint32_t count, double coefficient) {
        if (IsAtRest())
            std::fill_n(out, count, static_cast<float>(current));
        else
            for (uint32_t i = 0; i < count; ++i)
                out[i] = Tick(coefficient);
    }
    /// Fill for two of them, so that their recursions overlap.
    static void FillTwo(SampleGlide& a, float* outA, SampleGlide& b, float* outB, uint32_t count,
                        double coefficient) {
        if (a.IsAtRest() || b.IsAtRest()) {
            a.Fill(outA, count, coefficient);
            b.Fill(outB, count, coefficient);
            return;
        }
        SampleGlide localA = a, localB = b;
        for (uint32_t i = 0; i < count; ++i) {
            outA[i] = localA.Tick(coefficient);
            outB[i] = localB.Tick(coefficient);
        }
        a = localA;
        b = localB;
    }

    double current = 0.0;
    double target = 0.0;
    double threshold = 0.0;  ///< steps below this end the glide

private:
    float Tick(double coefficient) {
        const double step = (target - current) * coefficient;
        current = std::abs(step) >= threshold ? current + step : target;
        return static_cast<float>(current);
    }
};

}  // namespace Quorvan::dsp
