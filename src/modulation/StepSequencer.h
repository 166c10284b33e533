#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "modulation/IGenerator.h"
#include "modulation/StepOrder.h"
#include "primitives/SmootherLPF.h"

namespace Quorvan::dsp {

/// Sequence of up to 32 values, one a cycle of the generator, each with a random deviation that is
/// drawn anew at every pass.
///
/// Inputs      0 rate, 1 NbSteps: rows read once a block
/// Outputs     0 the present step's value, in the range of its StepVal parameter
/// Parameters  0 to 12 as in IGenerator; with SppHardFollow the clock's cycle count places the step
///             13 NbSteps 1..32
///             14 CurrentStep 0..31: written once a block
///             15 Smooth: glide as a fraction of a step, worked out where it is written
///             16 LoopMode forward, backward, back and forth with the ends played twice, random
///             17 RandomAmount: how far the deviations reach
///             18.. StepVal1..32, whose range the owner gives
///             50.. StepDev1..32 -1..1: written by the sequencer
class StepSequencer final : public IGenerator {
public:
    static constexpr uint32_t kMaxSteps = 32;
    enum Id : uint32_t {
        NbSteps = kBaseParameterCount,
        CurrentStep,
        Smooth,
        LoopMode,
        RandomAmount,
        StepVal1,
        StepDev1 = StepVal1 + kMaxSteps
    };
    static constexpr uint32_t kParameterCount = 82;

    explicit StepSequencer(std::string moduleName);

    void OnSetup(float rateHz, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool UpdateParameters(ProcessBlock& block) override;
    void Restart() override;
    bool Generate(ProcessBlock& block) override;
    /// From 0.
    int32_t PlayedStep() const { return currentStep; }

private:
    void UpdateSmoothing();
    int32_t StepCount(const ProcessBlock& block);
    void Place(int32_t stepCount, bool locked);
    void PlaceBeforeStart(int32_t stepCount, bool locked);
    void Advance(int32_t stepCount);
    bool IsPassStart(int32_t stepCount) const;
    void DrawDeviations();
    float StepOutput();
    void Write(float* out, uint32_t count, float value);

    // Coefficients.
    std::array<float, kMaxSteps> stepValues;  ///< positions
    int32_t loopMode = kForward;
    bool smoothOn = false;

    // State.
    SmootherLPF smoother{1.0};
    int32_t currentStep = 0;
    int32_t lastCycle = 0;      ///< clock cycle of the last advance
    uint32_t pingPongDown = 0;  ///< direction of the back and forth mode
    uint32_t randomState;
    bool needsPositioning = true;  ///< the next block places the sequence
    bool smootherJustOn = true;    ///< the next output jumps instead of gliding
};

}  // namespace Quorvan::dsp
