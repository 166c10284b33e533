#include "primitives/SmootherSRL.h"

namespace Quorvan::dsp {

void SmootherSRL::UpdateCoefficients() {
    maxStep = static_cast<double>(stepLength) * range / (time * sampleRate);
}

}  // namespace Quorvan::dsp
