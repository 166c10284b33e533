#pragma once

#include <cstdint>
#include <string>

#include "effects/Chorus.h"
#include "framework/ModuleContainer.h"

namespace Quorvan::dsp {

/// Chorus of one voice in a flanger's terms: the delay sweeps from MinDelay to MinDelay and twice
/// DepthFlanger.
///
/// Inputs      0, 1 audio, a missing right one reads as the left one; 2 to 4 modulation rows of the
///             Chorus's DryWet, rate and Feedback, read once a block
/// Outputs     0, 1 audio, in place allowed
/// Parameters  0 to 15 those of the Chorus, of which Delay reaches 30 ms, Feedback -1..1, and Delay
///             and Depth are written by this module
///             16 MinDelay, 17 DepthFlanger: 0..1 ms, until the owner gives them ranges; 2 samples
///               is the least delay in force
/// Latency     none
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

private:
    void PassSweepDown();
};

}  // namespace Quorvan::dsp
