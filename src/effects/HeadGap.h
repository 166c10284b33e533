#pragma once

#include <cstdint>

#include "primitives/DelayLine.h"

namespace Quorvan::dsp {

/// Comb of a playback head of a finite width, for one channel: the signal half way across the gap
/// and, mixed in, the sum over all of the gap, kept up as a running sum.
class HeadGap {
public:
    void Setup(float rate);
    void Clear();
    /// In place. For each sample, seconds: the delay between the heads, 0.06..0.162, and gaps: half
    /// the width as a delay in samples.
    void Process(float* samples, const float* seconds, const float* gaps, uint32_t count);
    /// Keeps the signal in mind, and leaves it alone.
    void Watch(const float* samples, uint32_t count);

private:
    static constexpr uint32_t kMost = 16;  ///< samples that go at once

    bool ProcessAtOnce(float* samples, const float* seconds, const float* gaps, uint32_t count);
    void Take(const float* samples, uint32_t count);

    float inverseSampleRate = 0.0f;

    // State.
    DelayLine line;
    float sum = 0.0f;
};

}  // namespace Quorvan::dsp
