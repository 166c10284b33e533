#include "granular/StepSequencerGranular.h"

#include <algorithm>
#include <utility>

#include "framework/ParameterTable.h"
#include "granular/GranularTables.h"
#include "primitives/Clock.h"

namespace Quorvan::dsp {

namespace {

constexpr uint32_t kStepsRow = 1;

ParameterTable BuildTable() {
    using P = ParameterSpec;
    constexpr uint32_t steps = StepSequencerGranular::kMaxSteps;
    ParameterTable table{P::Stepped("NbSteps", steps, 1.0f), P::Stepped("CurrentStep", steps),
                         P::Stepped("LoopMode", 4)};
    const auto values = static_cast<uint32_t>(kStepValues.size());
    table = Join(table, Numbered("StepVal", steps, P::Stepped("", values)));
    return Join(table, Numbered("StepOnOff", steps, P::Stepped("", 2)));
}

const ParameterTable& Table() {
    static const ParameterTable table = BuildTable();
    return table;
}

}  // namespace

StepSequencerGranular::StepSequencerGranular(std::string moduleName)
    : IGenerator(std::move(moduleName), 2, 1, Table()), randomState(prims::SeedFromClock()) {
    stepValues.fill(kStepValues[0]);
    rateInputMode = kPerBlock;
    rateInputIndex = 0;
    SetParameterValue(Mode, 2.0f);
    SetParameterValue(SppHardFollow, 1.0f);
}

bool StepSequencerGranular::UpdateParameters(ProcessBlock& block) {
    IGenerator::UpdateParameters(block);
    for (uint32_t i = 0; i < kMaxSteps; ++i) {
        const auto stored = [&] { return kStepValues[static_cast<size_t>(Value(StepVal1 + i))]; };
        if (IsChanged(StepVal1 + i))
            stepValues[i] = stored();
        if (IsChanged(StepOnOff1 + i))
            stepValues[i] = IsOn(i) ? stored() : 0.0f;
    }
    if (IsChanged(LoopMode))
        loopMode = Index(LoopMode);
    return true;
}

void StepSequencerGranular::Restart() {
    IGenerator::Restart();
    needsAlign = true;
}

bool StepSequencerGranular::Generate(ProcessBlock& block) {
    const auto stepCount =
        static_cast<int32_t>(parameters[NbSteps].GetBlockValue(block, kStepsRow));
    if (needsAlign)
        Align(stepCount);
    float* const out = block.outputs[0];
    float playing = StepOutput();
    if (!HasTicked())
        std::fill_n(out, block.numFrames, playing);
    for (uint32_t n = 0; HasTicked() && n < block.numFrames; ++n) {
        if (tickBuffer[n] > 0.5f) {
            const auto cycle = static_cast<int32_t>(cycleBuffer[n]);
            if (cycle != lastCycle) {
                lastCycle = cycle;
                AdvanceStep(loopMode, stepCount, randomState, currentStep, goingDown);
                playing = StepOutput();
            }
        }
        out[n] = playing;
    }
    SetParameterValue(CurrentStep, static_cast<float>(currentStep));
    return true;
}

float StepSequencerGranular::StepOutput() {
    const auto step = static_cast<uint32_t>(currentStep);
    return IsOn(step) ? stepValues[step] : 0.0f;
}

void StepSequencerGranular::Align(int32_t stepCount) {
    needsAlign = false;
    const auto cycle = static_cast<int32_t>(cycleBuffer[0]);
    lastCycle = tickBuffer[0] > 0.5f ? cycle : cycle - 1;
    PlaceStep(loopMode, stepCount, cycle, currentStep, goingDown);
}

}  // namespace Quorvan::dsp
