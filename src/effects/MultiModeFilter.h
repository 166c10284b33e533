#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "framework/UnitModule.h"
#include "primitives/AlignedVector.h"
#include "primitives/DelayLine.h"
#include "primitives/SmootherInterpLPF.h"
#include "primitives/SmootherLPF.h"
#include "primitives/SmootherSRL.h"

namespace Quorvan::dsp {

/// Filter with three state-variable modes of 12, 24 or 36 dB an octave and two combs. An output
/// gain follows the resonance, so that the level stays even.
///
/// Inputs      0, 1 audio; 2 to 4 modulation rows of Wet, of Freq or CombFreq, and of Q, read once
///             a block
/// Outputs     0, 1 audio, in place allowed
/// Parameters  0 Wet 0..1: crossfade, glides in 10 ms
///             1 Mode 0 low-pass, 1 high-pass, 2 band-pass, 3 comb with feedback, 4 comb without
///             2 Freq 20..20000 Hz: corner, glides in 4 ms
///             3 Q 0.5..15 of each section; its position is the depth of the combs
///             4 Slope 12, 24, 36 dB an octave: one to three sections in series
///             5 CombFreq 20..2000 Hz: the comb's delay is one period, moves at a constant rate
/// Switching   a change of Mode or Slope clears the state, with a click
/// Method      trapezoidal state-variable sections, whose coefficients are worked out once a block
///             and move in straight lines between; rings read at whole samples. No latency.
class MultiModeFilter final : public UnitModule {
public:
    enum Id : uint32_t { Wet, Mode, Freq, Q, Slope, CombFreq };
    enum ModeValue : int32_t { kLowPass, kHighPass, kBandPass, kCombFeedback, kCombFeedForward };
    static constexpr uint32_t kParameterCount = 6;

    explicit MultiModeFilter(std::string moduleName);

    /// Linear gain behind the filter at a resonance of 0.5..15, for one to three sections.
    static float OutputGain(int32_t mode, int32_t stages, float q);
    /// The same of the comb with feedback, over its depth 0..0.99.
    static float CombGain(float depth);
    static constexpr float kDeepestComb = 0.99f;  ///< depth at full Q

    void OnSetup(float rate, uint32_t blockFrames) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;

private:
    static constexpr uint32_t kChannels = 2;
    static constexpr uint32_t kMaxStages = 3;

    /// Integrators of one section.
    struct Section {
        float ic1 = 0.0f;
        float ic2 = 0.0f;
    };

    void ReadMode();
    void ReadStages() { stages = static_cast<int32_t>(Value(Slope) * kStagesPerDecibel); }
    void ClearState();
    void ClearLines();
    void SetResonance(float q);
    void UpdateCoefficients();

    void RunStateVariable(ProcessBlock& block);
    void RampCoefficients(const ProcessBlock& block);
    template <uint32_t kStages>
    void RunSections(const ProcessBlock& block);
    float RunSection(Section& section, float x, uint32_t i) const;

    void RunComb(ProcessBlock& block);
    template <bool kRecursive>
    void RunRing(uint32_t channel, const ProcessBlock& block);

    static constexpr float kStagesPerDecibel = 0.083333336f;

    float sampleRate = 0.0f;
    float inverseSampleRate = 0.0f;
    uint32_t blockSize = 0;
    float inverseBlockSize = 0.0f;

    // Coefficients.
    int32_t mode = kLowPass;
    int32_t stages = 1;
    bool combMode = false;
    bool combRecursive = false;
    float frequency = 0.1f;  ///< of this block
    float resonance = 0.5f;
    float inverseResonance = 2.0f;
    float outputGain = 1.0f;  ///< what gainSmoother aims at
    float a1 = 0.0f, a2 = 0.0f, a3 = 0.0f;
    float mixInput = 0.0f, mixBand = 0.0f, mixLow = 0.0f;  ///< a section's output
    float resonancePosition = 0.0f;
    float combFeedback = 0.0f;

    // State.
    std::array<std::array<Section, kMaxStages>, kChannels> sections{};
    std::array<DelayLine, kChannels> delayLines;              // plain rings, read at whole samples
    SmootherInterpLPF wetSmoother{0.01}, gainSmoother{0.01};  // one tick a sample
    SmootherLPF frequencySmoother{0.004};                     // hertz, one tick a block
    SmootherSRL delaySmoother{0.03};                          // samples, one tick a sample

    // Buffers of one block.
    AlignedVector wetBuffer, gainBuffer, delayBuffer;
    AlignedVector a1Ramp, a2Ramp, a3Ramp, bandRamp;
};

}  // namespace Quorvan::dsp
