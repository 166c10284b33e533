#pragma once

#include <limits>

#include "primitives/Decibels.h"

namespace Quorvan::Processor {

/// The linear gain of a level in decibels that rests most of the time: then it is what it was.
class KnownGain {
public:
    float Of(float decibels) {
        if (decibels != level)
            gain = dsp::DecibelsToGain(decibels);
        level = decibels;
        return gain;
    }

private:
    float level = std::numeric_limits<float>::quiet_NaN();
    float gain = 0.0f;
};

}  // namespace Quorvan::Processor
