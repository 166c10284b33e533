#pragma once

#include <cstdint>
#include <string>

#include "framework/UnitModule.h"

namespace Quorvan::dsp {

/// Plate reverberator, a figure-of-eight tank.
///
/// Inputs      0 audio, mono; 1 to 5 modulation rows of Decay, E_Size, Predelay, Damping and of the
///             size once more
/// Outputs     0, 1 audio, wet alone
class DattorroCore final : public UnitModule {
public:
    enum Id : uint32_t {
        Predelay,
        InputDiffusion1,
        InputDiffusion2,
        Decay,
        DecayDiffusion1,
        DecayDiffusion2,
        Damping,
        Excursion,
        OscillatorRate,
        OscillatorSpread,
        Size,
        SmoothTimeDelay,
        Freeze,
        InterpType
    };
    /// Ids that a container gives it; InterpType stands behind them.
    static constexpr uint32_t kParameterCount = 13;

    explicit DattorroCore(std::string moduleName);

    void OnSetup(float rate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    bool OnProcess(ProcessBlock& block) override;
};

}  // namespace Quorvan::dsp
