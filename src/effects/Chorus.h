#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "effects/ChorusVoice.h"
#include "effects/EqualPowerMix.h"
#include "framework/UnitModule.h"
#include "primitives/AlignedVector.h"
#include "primitives/OnePole.h"
#include "primitives/SmootherLPF.h"
#include "primitives/SmootherSRL.h"

namespace Quorvan::dsp {

/// Modulated delay of one to three voices a channel. The voices are spread evenly round the cycle,
/// each 5 ms later than the one before, and the right channel runs a quarter cycle ahead.
///
/// Inputs      0, 1 audio, a missing right one reads as the left one; 2 to 4 modulation rows of
///             DryWet, the oscillators' rate and Feedback, read once a block
/// Outputs     0, 1 audio, the right one may be missing; in place allowed
/// Parameters  0 DryWet 0..1: equal power, glides in 10 ms
///             1 Delay 0.6..20 ms: the middle, 2 samples at least; 2 Depth 0..10 ms to either side,
///               held to 2 samples less than the delay; both glide in 0.2 s
///             3 Freq 0.1..5 Hz: rate of the oscillators
///             4 Feedback 0..0.9: glides in 10 ms
///             5 FBPolarity 0 the feedback is taken off, 1 added
///             6 StereoMode 0 the channels' mean goes in and the same comes out on both, 1 stereo
///             7 Voices 1..3: a change restarts the oscillators
///             8 LFOShape 0 sine, 1 triangle
///             9 MidiSync, 10 RateSyncedType, 11 RateSynced: as the oscillators have them
///             12 LPFfc 20..20000 Hz, 13 HPFfc 20..10000 Hz: filters of the wet signal, in the
///               loop; slewed while on, the whole range in 0.1 s
///             14 LPFOn, 15 HPFOn: above 0.5
/// Latency     none
/// Method      Lines are read through a first-order all-pass, flat at every fraction.
class Chorus final : public UnitModule {
public:
    enum Id : uint32_t {
        DryWet,
        DelayMs,
        Depth,
        Freq,
        Feedback,
        FBPolarity,
        StereoMode,
        Voices,
        LFOShape,
        MidiSync,
        RateSyncedType,
        RateSynced,
        LPFfc,
        HPFfc,
        LPFOn,
        HPFOn
    };
    static constexpr uint32_t kParameterCount = 16;

    explicit Chorus(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;

private:
    static constexpr uint32_t kChannels = ChorusVoice::kChannels;
    static constexpr uint32_t kMaxVoices = 3;
    using Buffers = std::array<AlignedVector, kChannels>;

    void SetupVoices();
    void SetupSmoothers();
    template <class Visit>
    void ForEachActive(Visit&& visit);
    void SetAll(uint32_t lfoId, float value);
    void SetAllNormalized(uint32_t lfoId, float position);

    float DelayTarget();
    float DepthTarget();
    float FeedbackSign();
    void UpdateDelay();
    void UpdateVoices();
    void UpdateSwitches();
    void UpdateSync();
    void UpdateFilters();
    void ComputeLowPass();
    void ComputeHighPass();

    void FillMix(ProcessBlock& block);
    void FillGlides(ProcessBlock& block);
    void TakeInput(const ProcessBlock& block);
    void RunVoices(const ProcessBlock& block);

    // Coefficients.
    uint32_t blockFrames = 0;
    float sampleRate = 0.0f;
    float minRate = 0.0f, maxRate = 0.0f;  ///< hertz, of the free oscillators
    float rate = 0.0f;                     ///< hertz
    uint32_t channelCount = kChannels;
    uint32_t voiceCount = 1;
    float voiceGain = 1.0f;     ///< 1 / voices
    float wetVoiceGain = 1.0f;  ///< its square root
    float feedbackSign = 1.0f;
    int32_t lfoWaveform = 0;
    bool lowPassOn = false, highPassOn = false;
    float lowPassHz = 0.0f, highPassHz = 0.0f;
    OnePole lowPass, highPass;

    // State.
    std::array<ChorusVoice, kMaxVoices> voices;
    ChorusLanes lanes;
    EqualPowerMix mix;
    SmootherLPF delaySmoother{0.2}, depthSmoother{0.2};       // samples, one tick a sample
    SmootherSRL lowPassSmoother{0.1}, highPassSmoother{0.1};  // hertz, one tick a block
    SmootherLPF feedbackSmoother{0.01};                       // signed, one tick a sample

    // Buffers of one block.
    AlignedVector delay, depth, feedback;
    AlignedVector voiceWet;  ///< gain of each voice
    Buffers input, sum;
};

}  // namespace Quorvan::dsp
