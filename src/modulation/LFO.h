#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "modulation/IGenerator.h"
#include "primitives/SmootherLPF.h"

namespace Quorvan::dsp {

/// Oscillator for control signals: one of six waveforms over the generator's phase, mono or stereo,
/// with smoothing and a fade-in after every restart.
///
/// Inputs      0 rate, 1 Amp, 2 PhaseInit: rows read once a block
/// Outputs     0 left, 1 right: -1..1, or 0..1 with Unipolar; right stays 0 without Stereo
/// Parameters  0 to 12 as in IGenerator
///             13 Waveform sine, triangle, falling saw, rising saw, square, sample and hold
///             14 Amp 0..1
///             15 Smooth in seconds, or in cycles with 16 SmoothRateLinked
///             17 Fade: length of the fade-in in seconds
///             18 Stereo, 19 StereoSpread 0..360 degrees that the right channel is ahead
///             20 SnHStereoMode: the right held value follows the left's late by twice the spread,
///             or is its negative
///             21 Unipolar
///             22 CurrentPhaseFeedback, 23 CurrentValueLFeedback: written once a block
class LFO final : public IGenerator {
public:
    enum Id : uint32_t {
        Waveform = kBaseParameterCount,
        Amp,
        Smooth,
        SmoothRateLinked,
        Fade,
        Stereo,
        StereoSpread,
        SnHStereoMode,
        Unipolar,
        CurrentPhaseFeedback,
        CurrentValueLFeedback
    };
    enum Shape : uint32_t { kSine, kTriangle, kFallingSaw, kRisingSaw, kSquare, kSampleAndHold };
    static constexpr uint32_t kParameterCount = 24;

    explicit LFO(std::string moduleName);

    void OnSetup(float rateHz, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    void Restart() override;
    bool Generate(ProcessBlock& block) override;
    /// For an owner that reads the first sample of each block only: the others may be anything.
    void NeedOnlyFirstSamples() { onlyFirstStep = true; }

private:
    static constexpr uint32_t kChannels = 2;
    enum HeldStereo : uint32_t { kSpread = 0, kInverted = 1 };

    float Draw();
    void DrawHeld();
    void SetSmoothingTime(float seconds);
    float PhaseOffset(const ProcessBlock& block);
    void FillShape(float* out, uint32_t steps, float spread, float offset) const;
    void FillHeldLeft(float* out, uint32_t steps);
    void FillHeldRight(float* out, uint32_t steps, float spread);
    void Scale(float* out, uint32_t steps, float amplitude) const;
    void ApplyFade(float* out, uint32_t steps) const;

    // Coefficients.
    uint32_t waveform = kSine;
    uint32_t channelCount = 1;
    uint32_t snhStereoMode = kSpread;
    float lfoSampleRate = 1.0f;
    float samplesPerStep = 44.0f;  ///< the block size under ControlRate
    float fadeIncrement = 0.0f;    ///< of one step
    bool unipolar = false;
    bool smoothOn = false;
    bool smoothRateLinked = false;
    bool onlyFirstStep = false;

    // State.
    std::array<SmootherLPF, kChannels> smoothers{SmootherLPF{1.0}, SmootherLPF{1.0}};
    std::array<float, kChannels> held{};  ///< sample and hold
    float previousHeld = 0.0f;            ///< the left one at the last step's start
    float lastPhase = 0.0f;
    bool rightSwitched = false;  ///< the right channel has taken the left one's last value over
    float fadePosition = 0.0f;   ///< over at 1
    uint32_t randomState;
};

}  // namespace Quorvan::dsp
