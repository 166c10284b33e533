#pragma once

#include <cstdint>
#include <string>

#include "framework/UnitModule.h"

namespace Quorvan::dsp {

/// Delay with a pitch shifter of two read taps in its loop.
///
/// Inputs      0, 1 audio
/// Outputs     0, 1 audio, fully wet
class PitchShiftDelay final : public UnitModule {
public:
    enum Id : uint32_t {
        Stereo,
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
        Detune,
        ModDelayConnected,
        ModOffsetConnected
    };
    static constexpr uint32_t kParameterCount = 15;

    explicit PitchShiftDelay(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;
};

}  // namespace Quorvan::dsp
