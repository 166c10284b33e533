#pragma once

#include <cstdint>

namespace Quorvan::dsp {

/// First-order high-pass at 10 Hz with a gain of 0.97, for one channel.
class TapeDcBlock {
public:
    void Setup(float rate) {
        const float a = rate * kDoubleTimeConstant;
        const float n = 1.0f / (a + 1.0f);
        gain = rate * kGainTime * n;
        feedback = (1.0f - a) * n;
    }
    void Clear() { lastIn = lastOut = 0.0f; }
    void Process(const float* in, float* out, uint32_t count) {
        for (uint32_t i = 0; i < count; ++i) {
            lastOut = (in[i] - lastIn) * gain - lastOut * feedback;
            lastIn = in[i];
            out[i] = lastOut;
        }
    }

private:
    static constexpr float kDoubleTimeConstant = 0.03099442f;  // seconds
    static constexpr float kGainTime = 0.030054422f;           // the same, times the gain

    float gain = 0.0f, feedback = 0.0f;

    // State.
    float lastIn = 0.0f, lastOut = 0.0f;
};

}  // namespace Quorvan::dsp
