#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "modulation/IGenerator.h"
#include "modulation/StepOrder.h"

namespace Quorvan::dsp {

/// Rhythm of the beat mode: a pattern of up to 16 steps, each silent or a multiplier of the trigger
/// rate, one step a cycle of the clock, placed by the song position.
///
/// Inputs      0 rate, once a block; 1 modulation row of NbSteps, once a block
/// Outputs     0 value of the present step: 0 silent, else 1, 2 or 3
/// Parameters  0 to 12 as in IGenerator
///             13 NbSteps 1..16, 14 CurrentStep 0..15: written by the sequencer
///             15 LoopMode forward, backward, back and forth with the ends played twice, random
///             16.. StepVal1..16 index into the multipliers, 32.. StepOnOff1..16
class StepSequencerGranular final : public IGenerator {
public:
    enum Id : uint32_t {
        NbSteps = kBaseParameterCount,
        CurrentStep,
        LoopMode,
        StepVal1,
        StepOnOff1 = StepVal1 + 16
    };
    static constexpr uint32_t kMaxSteps = 16;
    static constexpr uint32_t kParameterCount = 48;

    explicit StepSequencerGranular(std::string moduleName);

    bool UpdateParameters(ProcessBlock& block) override;
    void Restart() override;
    bool Generate(ProcessBlock& block) override;

private:
    bool IsOn(uint32_t step) { return Value(StepOnOff1 + step) >= 0.5f; }
    float StepOutput();
    void Align(int32_t stepCount);

    std::array<float, kMaxSteps> stepValues;
    int32_t currentStep = 0;
    int32_t lastCycle = 0;  ///< clock cycle of the last advance
    int32_t loopMode = kForward;
    uint32_t goingDown = 0;  ///< direction of the back and forth mode
    uint32_t randomState;
    bool needsAlign = true;  ///< the next block sets the step from the clock
};

}  // namespace Quorvan::dsp
