#include "primitives/SmootherLPF.h"

#include <algorithm>
#include <cmath>

namespace Quorvan::dsp {

void SmootherLPF::SetTarget(float value) {
    const auto wanted = static_cast<double>(value);
    if (wanted == target)
        return;
    target = wanted;
    threshold = ThresholdFor(wanted);
}

void SmootherLPF::UpdateCoefficients() {
    coefficient = 1.0 - std::exp(-5.0 / (time * sampleRate) * static_cast<double>(stepLength));
}

double SmootherLPF::ThresholdFor(double value) {
    return std::max(std::abs(value) * kRelativeThreshold, kLeastThreshold);
}

}  // namespace Quorvan::dsp
