#include "primitives/SmootherInterpLPF.h"

namespace Quorvan::dsp {

void SmootherInterpLPF::SetTarget(float value) {
    const auto wanted = static_cast<double>(value);
    if (wanted == rampValue)
        return;
    target = wanted;
    threshold = ThresholdFor(wanted);
    rampCounter = 0;
    rampIncrement = (wanted - rampValue) / static_cast<double>(rampSteps);
}

void SmootherInterpLPF::SetStartAndTarget(float start, float end) {
    current = rampValue = static_cast<double>(start);
    if (start != end) {
        target = static_cast<double>(end);
        SetTarget(end);
    } else {
        target = static_cast<double>(start);
        EndRamp();
    }
}

void SmootherInterpLPF::Reset(float value) {
    SmootherLPF::Reset(value);
    rampValue = current;
    EndRamp();
}

}  // namespace Quorvan::dsp
