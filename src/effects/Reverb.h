#pragma once

#include <cstdint>
#include <string>

#include "effects/DattorroCore.h"
#include "framework/ModuleContainer.h"

namespace Quorvan::dsp {

/// Plate reverb with early reflections.
///
/// Inputs      0, 1 audio; 2 to 9 modulation rows
/// Outputs     0, 1 audio
class Reverb final : public ModuleContainer<DattorroCore> {
public:
    /// Own parameters, behind those of the core.
    enum Id : uint32_t {
        LPBandWith = kFirstOwnId,
        HPBandWith,
        Wet,
        EarlyOn,
        EarlySize,
        EarlyMix,
        InvertEarly,
        OutputGain,
        MSMix,
        SmoothTimeDelayCont
    };
    static constexpr uint32_t kParameterCount = 23;

    explicit Reverb(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;
};

}  // namespace Quorvan::dsp
