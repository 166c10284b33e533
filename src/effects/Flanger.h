#pragma once

#include <cstdint>
#include <string>

#include "effects/Chorus.h"
#include "framework/ModuleContainer.h"

namespace Quorvan::dsp {

/// Chorus of one voice in a flanger's terms.
///
/// Inputs      0, 1 audio; 2 to 4 modulation rows of DryWet, the rate and Feedback
/// Outputs     0, 1 audio
class Flanger final : public ModuleContainer<Chorus> {
public:
    /// Own parameters, behind those of the Chorus.
    enum Id : uint32_t { MinDelay = kFirstOwnId, DepthFlanger };
    static constexpr uint32_t kParameterCount = 18;

    explicit Flanger(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;
};

}  // namespace Quorvan::dsp
