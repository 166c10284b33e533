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
///             17 Fade-in in seconds
///             18 Stereo, 19 StereoSpread 0..360 degrees that the right channel is ahead
///             20 SnHStereoMode: right held value late by twice the spread, or the left's negative
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
};

}  // namespace Quorvan::dsp
