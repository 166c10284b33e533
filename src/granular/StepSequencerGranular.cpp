#include "granular/StepSequencerGranular.h"

#include <algorithm>
#include <utility>

#include "framework/ParameterTable.h"
#include "granular/GranularTables.h"
#include "primitives/Clock.h"
#include "primitives/Xorshift.h"

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
    for (uint32_t n = 0; n < block.numFrames; ++n) {
        if (tickBuffer[n] > 0.5f) {
            const auto cycle = static_cast<int32_t>(cycleBuffer[n]);
            if (cycle != lastCycle) {
                lastCycle = cycle;
                Advance(stepCount);
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
    // A clock that runs ahead of its origin counts below 0; the pattern is periodic there too.
    const auto modulo = [](int32_t x, int32_t n) { return (x % n + n) % n; };
    if (loopMode == kForward) {
        currentStep = modulo(cycle, stepCount);
    } else if (loopMode == kBackward) {
        currentStep = stepCount - modulo(cycle, stepCount) - 1;
    } else if (loopMode == kBackAndForth) {
        const int32_t m = modulo(cycle, 2 * stepCount);
        goingDown = m < stepCount ? 0 : 1;
        currentStep = m < stepCount ? m : 2 * stepCount - m - 1;
    }
}

void StepSequencerGranular::Advance(int32_t stepCount) {
    currentStep = std::min(currentStep, stepCount - 1);
    switch (loopMode) {
        case kForward:
            currentStep = (currentStep + 1) % stepCount;
            break;
        case kBackward:
            currentStep = (stepCount - 1 + currentStep) % stepCount;
            break;
        case kBackAndForth:
            if (goingDown == 0 && currentStep < stepCount - 1)
                ++currentStep;
            else if (goingDown != 0 && currentStep > 0)
                --currentStep;
            else
                goingDown ^= 1;
            break;
        default: {
            const float draw = prims::XorshiftUniform(randomState);
            currentStep = static_cast<int32_t>(draw * static_cast<float>(stepCount)) % stepCount;
            break;
        }
    }
}

}  // namespace Quorvan::dsp
