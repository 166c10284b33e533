#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "framework/UnitModule.h"
#include "primitives/AlignedVector.h"
#include "primitives/SmootherInterpLPF.h"

namespace Quorvan::dsp {

/// Reduces sample rate and bit depth. In place of holding samples, the signal walks in straight
/// ramps from one taken sample towards the next; what is quantised is the walk.
///
/// Inputs      0, 1 audio; 2 to 4 modulation rows of Wet, Bitdepth and Downsample, once a block.
/// Outputs     0, 1 audio, in place allowed.
/// Parameters  0 Wet 0..1, smoothed over 5 ms
///             1 Bitdepth 1.5..16 bits, 16 at position 0
///             2 Downsample 1..80, divisor of the sample rate at 44100 Hz
///             3 InGainCompensated -40..40 dB, default 0: drive, taken off again at the end
///             4 StereoBC 0 one channel, 1 both (default)
/// Method      a high-pass at 10 Hz ahead of the reduction keeps the steps centred. No latency.
class BitCrusher final : public UnitModule {
public:
    enum Id : uint32_t { Wet, Bitdepth, Downsample, InGainCompensated, StereoBC };
    static constexpr uint32_t kParameterCount = 5;

    explicit BitCrusher(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;

private:
    static constexpr uint32_t kMaxChannels = 2;

    /// One channel's memory.
    struct Channel {
        float dcState = 0.0f;
        float held = 0.0f;   ///< the stepped signal ahead of the quantiser
        float slope = 0.0f;  ///< move of held, a sample
    };

    void SetBitDepth(float bits);
    void SetDownsample(float divisor);
    template <uint32_t kChannels>
    void Run(const ProcessBlock& block);
    bool TakesSample(float& clock) const;
    float HighPass(Channel& channel, float input) const;
    float Walk(Channel& channel) const;
    float QuantizeStep(float y) const;

    float sampleRate = 0.0f;

    // Coefficients.
    int32_t channels = 0;
    float deadZone = 0.0f;  ///< below this magnitude the output is 0
    float dcGain = 0.0f;
    float dcFeedback = 0.0f;
    float period = 1.0f;  ///< samples between two taken ones
    float inversePeriod = 1.0f;
    float halfLevels = 0.0f;
    float halfStep = 0.0f;
    float step = 0.0f;
    float inGain = 1.0f;
    float outGain = 1.0f;

    // State.
    bool updateRight = false;  ///< the left channel has taken a sample, the right one's turn is due
    float phase = 0.0f;        ///< samples since the last taken one
    std::array<Channel, kMaxChannels> state;
    SmootherInterpLPF wetSmoother{0.005};
    AlignedVector wet;  ///< smoothed Wet, one value a sample
};

}  // namespace Quorvan::dsp
