#pragma once

#include "primitives/SmootherLPF.h"

namespace Quorvan::dsp {

/// Two SmootherLPF in the lanes of a vector, with the results of one after the other. A value for
/// the length of a loop: it takes the smoothers' state, and Store gives it back.
class SmootherLPFPair {
public:
    using Lanes = double __attribute__((vector_size(16)));

    SmootherLPFPair(const SmootherLPF& a, const SmootherLPF& b)
        : current{a.current, b.current},
          target{a.target, b.target},
          threshold{a.threshold, b.threshold},
          coefficient{a.coefficient, b.coefficient} {}

    /// SetTarget of each. A target set once more changes nothing.
    void SetTargets(float a, float b) {
        target = Lanes{static_cast<double>(a), static_cast<double>(b)};
        const Lanes size = (target < 0.0 ? -target : target) * SmootherLPF::kRelativeThreshold;
        const Lanes least = Lanes{} + SmootherLPF::kLeastThreshold;
        threshold = size < least ? least : size;
    }
    void Tick() {
        const Lanes step = (target - current) * coefficient;
        const auto goesOn = (step >= threshold) | (-step >= threshold);
        current = goesOn ? current + step : target;
    }
    float Value(int lane) const { return static_cast<float>(current[lane]); }
    bool IsAtRest(int lane) const { return current[lane] == target[lane]; }

    void Store(SmootherLPF& a, SmootherLPF& b) const {
        StoreLane(a, 0);
        StoreLane(b, 1);
    }

    /// FillBlock of both.
    static void FillBlocks(SmootherLPF& a, float* outA, SmootherLPF& b, float* outB,
                           uint32_t count) {
        if (a.IsAtRest() || b.IsAtRest()) {
            a.FillBlock(outA, count);
            b.FillBlock(outB, count);
            return;
        }
        SmootherLPFPair both(a, b);
        for (uint32_t i = 0; i < count; ++i) {
            both.Tick();
            outA[i] = both.Value(0);
            outB[i] = both.Value(1);
        }
        both.Store(a, b);
    }

private:
    void StoreLane(SmootherLPF& smoother, int lane) const {
        smoother.current = current[lane];
        smoother.target = target[lane];
        smoother.threshold = threshold[lane];
    }

    Lanes current, target, threshold, coefficient;
};

}  // namespace Quorvan::dsp
