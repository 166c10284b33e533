#pragma once

#include <cstdint>
#include <string>

#include "framework/UnitModule.h"

namespace Quorvan::dsp {

/// Tape loop echo.
///
/// Inputs      0, 1 audio, the right one may be null; 2 to 9 modulation rows
/// Outputs     0, 1 audio
class SpaceEchoLite final : public UnitModule {
public:
    enum Id : uint32_t {
        InputVolume,
        DelayTime,
        DelayTimeFine,
        Intensity,
        DryWet,
        DelayTimeType,
        DelayTimeSynced,
        DelayType,
        StereoWidth,
        StereoWidthPP,
        LPFreq,
        HPFreq,
        PeakMeter,
        ConfInGainCompensated
    };
    static constexpr uint32_t kParameterCount = 14;

    explicit SpaceEchoLite(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;
};

}  // namespace Quorvan::dsp
