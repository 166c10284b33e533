#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

namespace Quorvan::test {

/// Plain model of a value that a module smooths over its blocks: a one-pole, within 0.7 % of the
/// way after time seconds, towards a straight line that reaches the target at the end of a full
/// block.
struct RampedPole {
    double rate, time, line = 0.0, value = 0.0;

    /// Jumps.
    void Put(double target) { line = value = target; }

    std::vector<double> Run(double target, uint32_t count, uint32_t steps) {
        const double coefficient = 1.0 - std::exp(-5.0 / (time * rate));
        const double from = line;
        std::vector<double> out;
        for (uint32_t i = 1; i <= count; ++i) {
            line = i >= steps ? target : from + (target - from) * i / steps;
            value += (line - value) * coefficient;
            out.push_back(value);
        }
        return out;
    }
};

}  // namespace Quorvan::test
