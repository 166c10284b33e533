#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "effects/PitchShiftDelay.h"
#include "framework/ModuleContainer.h"
#include "primitives/AlignedVector.h"
#include "primitives/SmootherInterpLPF.h"

namespace Quorvan::dsp {

/// One pitch-shifting delay, or two in a loop whose shifts add up to an octave.
///
/// Inputs      0, 1 audio, a missing right one reads as the left one; 2 to 10 modulation rows of
///             DryWet, the delay time in force, Feedback, HPFreq, LPFreq, PitchShift, Spray,
///             DelayOffset and Detune, read once a block
/// Outputs     0, 1 audio, in place allowed; with Stereo off the right one is dry
/// Parameters  0 to 14 those of the first stage, 15 to 29 those of the second, whose shift reaches
///             -36..36 semitones; then
///             30 Mode 0 one stage, 1 a loop that goes up an octave, 2 down: a change silences both
///             31 Stereo, 41 MidiSync, 42 RateSyncedType: written through to both stages
///             32 DryWet 0..1: full dry up to 0.5, full wet from 0.5 on; smoothed over 10 ms
///             35 Feedback 0..1: of the loop, smoothed over 50 ms, or of the one stage
///             36 PitchShift -24..24 semitones: of the first stage
///             37 Window: to both stages when written
///             33 DelayTimeMs, 34 DelayTimeSynced, 38 Spray, 39 HPFreq, 40 LPFreq,
///             43 DelayOffset, 44 Detune (turned round for the second stage): to both stages
/// Latency     not reported; the loop is a block longer than its delays
class OctaverDelay final : public ModuleContainer<PitchShiftDelay, PitchShiftDelay> {
public:
    /// Own parameters, behind those of the two stages.
    enum Id : uint32_t {
        Mode = kFirstOwnId,
        Stereo,
        DryWet,
        DelayTimeMs,
        DelayTimeSynced,
        Feedback,
        PitchShift,
        Window,
        Spray,
        HPFreq,
        LPFreq,
        MidiSync,
        RateSyncedType,
        DelayOffset,
        Detune
    };
    static constexpr uint32_t kParameterCount = 45;

    explicit OctaverDelay(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;

private:
    static constexpr uint32_t kChannels = 2;
    using Buffers = std::array<AlignedVector, kChannels>;

    /// Writes a physical value to both stages.
    void SetBoth(uint32_t idInChild, float value);
    void PassDown(ProcessBlock& block);
    void UpdateShifts(ProcessBlock& block);
    void UpdateGains(ProcessBlock& block);
    void RunStage(PitchShiftDelay& stage, const ProcessBlock& block, Buffers& in, Buffers& out);

    // Coefficients.
    uint32_t blockFrames = 0;
    int32_t mode = 0;

    // State.
    SmootherInterpLPF wetSmoother{0.01};       // 0..2, one tick a sample
    SmootherInterpLPF loopGainSmoother{0.05};  // one tick a sample
    Buffers stage2Out;                         ///< of the last block, until stage 2 has run again

    // Buffers of one block.
    AlignedVector wetGain, dryGain, loopGain;
    Buffers stage1In, stage1Out, stage2In;
};

}  // namespace Quorvan::dsp
