#pragma once

#include <cmath>
#include <cstdint>
#include <string>

#include "framework/UnitModule.h"

namespace Quorvan::dsp {

/// Peak meter for display: rises at once and falls by 20 dB in 1.7 s, whatever the block size.
///
/// Inputs      0 audio.  Outputs  none
/// Parameters  0 Level 0..1, linear: written by the meter, once a block
class DigitalPPM final : public UnitModule {
public:
    enum Id : uint32_t { Level };
    static constexpr uint32_t kParameterCount = 1;

    explicit DigitalPPM(std::string moduleName);

    void OnSetup(float sampleRate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;
    /// What Process does, of two meters in one loop, each with a channel of inputs: a meter waits
    /// for its own last sample, and the other needs no time beside it.
    static void ProcessPair(DigitalPPM& first, DigitalPPM& second, const ProcessBlock& block,
                            const float* const* inputs);

private:
    bool Show();
    float Next(float now, float input) const {
        const float a = std::abs(input);
        return a > now ? a : a * inputGain - now * negativeDecay;
    }

    float inputGain = 0.0f;      ///< share of the input while falling
    float negativeDecay = 0.0f;  ///< fall of one sample, negated
    float level = 0.0f;          ///< state, linear
};

}  // namespace Quorvan::dsp
