#pragma once

#include <cstdint>
#include <vector>

#include "primitives/DelayLine.h"

namespace Quorvan::dsp {

/// Delays a gain curve and draws a straight line back over the delay wherever the curve falls, so
/// that the delayed gain is down by the time the sample that asked for it comes out.
///
/// Latency     the look-ahead, in samples
class LookaheadGain {
public:
    /// Takes the memory for look-aheads below capacity samples.
    void Resize(int32_t capacity);
    void Clear();
    /// Sets the look-ahead, from 1 to below the capacity.
    void SetLength(int32_t samples);
    /// Replaces count linear gains by those of the samples now leaving the delay.
    void Process(float* gains, uint32_t count);
    /// Process of count gains of 1. Answers whether all that leave are 1 as well.
    bool ProcessUnity(float* gains, uint32_t count);

private:
    void DrawRamp(int32_t newest, float from, float to);
    bool LowerTo(int32_t top, int32_t first, int32_t count, float from, float fall);

    DelayLine ring;
    int32_t length = 0;
    int32_t unityCount = 0;      ///< so many of the newest gains are known to be 1
    std::vector<float> weights;  ///< k: the ramp's height k samples before its end, as a share
};

}  // namespace Quorvan::dsp
