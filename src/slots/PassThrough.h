#pragma once

#include <cstdint>
#include <string>

#include "framework/UnitModule.h"

namespace Quorvan::Processor {

/// The empty effect: its outputs are its inputs.
///
/// Inputs      0, 1 audio
/// Outputs     0, 1 audio, in place allowed
/// Parameters  0 BypassUselessParam 0..1: without effect, holds the place in the id space
class PassThrough final : public dsp::UnitModule {
public:
    enum Id : uint32_t { BypassUselessParam };
    static constexpr uint32_t kParameterCount = 1;

    explicit PassThrough(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(dsp::ProcessBlock& block) override;
    bool OnProcess(dsp::ProcessBlock& block) override;
};

}  // namespace Quorvan::Processor
