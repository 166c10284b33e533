#include "effects/SpaceEchoSmootherLPFDouble.h"

#include <algorithm>
#include <cmath>

namespace Quorvan::dsp {

namespace {

constexpr double kLeastThreshold = 1e-6;
constexpr double kTimeConstants = 5.0;  // that time stands for

}  // namespace

double SpaceEchoSmootherLPFDouble::Tick() {
    if (std::abs(current - target) >= threshold)
        current += (target - current) * coefficient;
    else
        current = target;
    return current;
}

void SpaceEchoSmootherLPFDouble::SetTarget(double value) {
    if (value == target)
        return;
    target = value;
    const double first =
        std::abs(current - value) >= threshold ? current + (value - current) * coefficient : value;
    threshold = std::max(std::abs(first - current), kLeastThreshold);
}

void SpaceEchoSmootherLPFDouble::UpdateCoefficients() {
    coefficient =
        1.0 - std::exp(-kTimeConstants / (time * sampleRate) * static_cast<double>(stepLength));
}

}  // namespace Quorvan::dsp
