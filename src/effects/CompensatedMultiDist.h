#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "effects/MultiDist.h"
#include "framework/ModuleContainer.h"
#include "primitives/AlignedVector.h"

namespace Quorvan::Processor {

/// Distortion behind a fixed gain that is taken off again, so that the signal moves along the curve
/// and the level stays.
///
/// Inputs      0, 1 audio; 2 modulation row of Drive, may be null
/// Outputs     0, 1 audio
/// Parameters  0 to 4 those of MultiDist
///             5 InGainCompensated -24..0 dB, default 0: read once a block, jumps
class CompensatedMultiDist final : public dsp::ModuleContainer<dsp::MultiDist> {
public:
    /// Own parameters, behind those of the shaper.
    enum Id : uint32_t { InGainCompensated = kFirstOwnId };
    static constexpr uint32_t kParameterCount = 6;

    explicit CompensatedMultiDist(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(dsp::ProcessBlock& block) override;
    bool OnProcess(dsp::ProcessBlock& block) override;

private:
    std::array<dsp::AlignedVector, 2> scaled;  ///< one block of each input behind the gain
};

}  // namespace Quorvan::Processor
