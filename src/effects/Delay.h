#pragma once

#include <cstdint>
#include <string>

#include "framework/UnitModule.h"

namespace Quorvan::dsp {

/// Stereo echo with filters in the loop.
///
/// Inputs      0, 1 audio, the right one may be null; 2 to 8 modulation rows; 9 vibrato
/// Outputs     0, 1 audio
class Delay final : public UnitModule {
public:
    enum Id : uint32_t {
        DelayTimeMs,
        Feedback,
        Wet,
        HPFreq,
        LPFreq,
        StereoWidth,
        StereoWidthPP,
        StereoMode,
        MidiSync,
        RateSyncedType,
        DelayTimeSynced,
        DelayFineMs,
        VibratoMaxAmount
    };
    static constexpr uint32_t kParameterCount = 13;

    explicit Delay(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;
};

}  // namespace Quorvan::dsp
