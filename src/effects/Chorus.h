#pragma once

#include <cstdint>
#include <string>

#include "framework/UnitModule.h"

namespace Quorvan::dsp {

/// Modulated delay of one to three voices a channel.
///
/// Inputs      0, 1 audio, the right one may be null; 2 to 4 modulation rows of DryWet, the rate
/// and
///             Feedback
/// Outputs     0, 1 audio
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
};

}  // namespace Quorvan::dsp
