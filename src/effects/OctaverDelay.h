#pragma once

#include <cstdint>
#include <string>

#include "effects/PitchShiftDelay.h"
#include "framework/ModuleContainer.h"

namespace Quorvan::dsp {

/// One pitch-shifting delay, or two in a loop that shifts by an octave.
///
/// Inputs      0, 1 audio; 2 to 10 modulation rows
/// Outputs     0, 1 audio
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
};

}  // namespace Quorvan::dsp
