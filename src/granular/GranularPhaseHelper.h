#pragma once

#include <string>

#include "modulation/IGenerator.h"

namespace Quorvan::dsp {

/// A bare clock of the granular engine: a generator without an output, whose buffers the owner
/// reads.
///
/// Inputs      0 added to the position of the rate in force, sample by sample, where
///             FollowRateInput has been called
class GranularPhaseHelper final : public IGenerator {
public:
    static constexpr uint32_t kParameterCount = kBaseParameterCount;

    explicit GranularPhaseHelper(std::string moduleName);

    /// Makes input 0 move the rate.
    void FollowRateInput() {
        rateInputMode = kPerSample;
        rateInputIndex = 0;
    }
    bool Generate(ProcessBlock& block) override;
};

}  // namespace Quorvan::dsp
