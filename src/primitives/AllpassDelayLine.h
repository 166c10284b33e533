#pragma once

#include "primitives/DelayLine.h"

namespace Quorvan::dsp {

/// Schroeder all-pass around a delay line whose delay can be moved at audio rate.
class AllpassDelayLine : public DelayLine {
public:
    /// modulation, in samples, adds to baseDelay. Under a sum of 1 the sample written last is read.
    float Process(float input, float modulation) {
        // The largest whole number not above modulation, without a call.
        const auto truncated = static_cast<int32_t>(modulation);
        const int32_t whole =
            modulation < static_cast<float>(truncated) ? truncated - 1 : truncated;
        const int32_t delay = whole + baseDelay;
        const float y = delay < 1 ? Read(1, 0.0f, kNone)
                                  : Read(delay, modulation - static_cast<float>(whole), kLinear);
        const float v = input - y * gain;
        Write(v);
        return v * gain + y;
    }

    float gain = 0.0f;      ///< all-pass coefficient
    int32_t baseDelay = 0;  ///< samples
};

}  // namespace Quorvan::dsp
