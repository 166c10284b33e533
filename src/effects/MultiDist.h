#pragma once

#include <cstdint>
#include <string>

#include "framework/UnitModule.h"

namespace Quorvan::dsp {

/// Waveshaper with 13 curves at twice the sample rate.
///
/// Inputs      0, 1 audio; 2 modulation row of Drive
/// Outputs     0, 1 audio
class MultiDist final : public UnitModule {
public:
    enum Id : uint32_t { Stereo, DistType, Drive, OutputGain, AutoComp };
    static constexpr uint32_t kParameterCount = 5;

    explicit MultiDist(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;
};

}  // namespace Quorvan::dsp
