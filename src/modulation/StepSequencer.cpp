#include "modulation/StepSequencer.h"

#include <algorithm>
#include <utility>

#include "framework/ParameterTable.h"
#include "primitives/Clock.h"
#include "primitives/Xorshift.h"

namespace Quorvan::dsp {

namespace {

constexpr uint32_t kStepsRow = 1;
constexpr double kShortestTime = 1e-12;

ParameterTable BuildTable() {
    using P = ParameterSpec;
    constexpr uint32_t steps = StepSequencer::kMaxSteps;
    ParameterTable table{P::Stepped("NbSteps", steps, 1.0f), P::Stepped("CurrentStep", steps),
                         P::Raw("Smooth"), P::Stepped("LoopMode", 4), P::Raw("RandomAmount")};
    table = Join(std::move(table), Numbered("StepVal", steps, P::Stepped("", 2)));
    return Join(std::move(table), Numbered("StepDev", steps, P::Linear("", -1.0f, 1.0f)));
}

const ParameterTable& Table() {
    static const ParameterTable table = BuildTable();
    return table;
}

}  // namespace

StepSequencer::StepSequencer(std::string moduleName)
    : IGenerator(std::move(moduleName), 2, 1, Table()), randomState(prims::SeedFromClock()) {
    stepValues.fill(0.5f);
    rateInputMode = kPerBlock;
    rateInputIndex = 0;
    SetParameterValue(Mode, static_cast<float>(kFree));
}

void StepSequencer::OnSetup(float rateHz, uint32_t blockSize) {
    IGenerator::OnSetup(rateHz, blockSize);
    smoother.stepLength = Position(ControlRate) > 0.5f ? blockSize : 1;
    smoother.sampleRate = static_cast<double>(rateHz);
    smoother.UpdateCoefficients();
}

void StepSequencer::OnReset(bool) {
    wasPlaying = false;
    Restart();
    smoother.Reset(0.0f);
}

void StepSequencer::Restart() {
    IGenerator::Restart();
    needsPositioning = true;
}

bool StepSequencer::UpdateParameters(ProcessBlock& block) {
    IGenerator::UpdateParameters(block);
    for (uint32_t i = 0; i < kMaxSteps; ++i)
        if (IsChanged(StepVal1 + i))
            stepValues[i] = Position(StepVal1 + i);
    if (IsChanged(Smooth))
        UpdateSmoothing();
    if (IsChanged(LoopMode))
        loopMode = Index(LoopMode);
    return true;
}

void StepSequencer::UpdateSmoothing() {
    const float seconds = Value(Smooth) / RateInHertz(rate);
    const bool wasOn = smoothOn;
    smoothOn = seconds > 0.0f;
    if (smoothOn && !wasOn)
        smootherJustOn = true;
    // In this order a time that is not a number, 0 steps of a rate of 0, becomes the shortest.
    smoother.time = std::max(kShortestTime, static_cast<double>(seconds));
    smoother.UpdateCoefficients();
}

int32_t StepSequencer::StepCount(const ProcessBlock& block) {
    const auto count = static_cast<int32_t>(parameters[NbSteps].GetBlockValue(block, kStepsRow));
    return std::clamp(count, 1, static_cast<int32_t>(kMaxSteps));
}

bool StepSequencer::Generate(ProcessBlock& block) {
    const int32_t stepCount = StepCount(block);
    const bool locked = synced && mode == kFree;
    if (needsPositioning)
        Place(stepCount, locked);
    float* const out = block.outputs[0];
    float value = StepOutput();
    uint32_t written = 0;
    for (uint32_t i = 0; HasTicked() && i < block.numFrames; ++i) {
        if (tickBuffer[i] <= 0.5f)
            continue;
        const auto cycle = static_cast<int32_t>(cycleBuffer[i]);
        if (locked && cycle == lastCycle)
            continue;
        Write(out + written, i - written, value);
        written = i;
        lastCycle = cycle;
        Advance(stepCount);
        value = StepOutput();
    }
    Write(out + written, block.numFrames - written, value);
    SetParameterValue(CurrentStep, static_cast<float>(currentStep));
    return true;
}

void StepSequencer::Place(int32_t stepCount, bool locked) {
    needsPositioning = false;
    if (Position(SppHardFollow) > 0.5f) {
        const auto cycle = static_cast<int32_t>(cycleBuffer[0]);
        lastCycle = tickBuffer[0] > 0.5f ? cycle : cycle - 1;
        PlaceStep(loopMode, stepCount, cycle, currentStep, pingPongDown);
    } else {
        lastCycle = 0;
        PlaceBeforeStart(stepCount, locked);
    }
    if (locked)
        DrawDeviations();
}

/// A sequence that isn't locked moves on at the first tick, and so begins one step early.
void StepSequencer::PlaceBeforeStart(int32_t stepCount, bool locked) {
    if (loopMode == kForward) {
        currentStep = locked ? 0 : stepCount - 1;
    } else if (loopMode == kBackward) {
        currentStep = locked ? stepCount - 1 : 0;
    } else if (loopMode == kBackAndForth) {
        currentStep = 0;
        pingPongDown = locked ? 0 : 1;
    }
}

void StepSequencer::Advance(int32_t stepCount) {
    AdvanceStep(loopMode, stepCount, randomState, currentStep, pingPongDown);
    if (IsPassStart(stepCount))
        DrawDeviations();
}

/// In random order every step begins a pass.
bool StepSequencer::IsPassStart(int32_t stepCount) const {
    switch (loopMode) {
        case kForward:
            return currentStep == 0;
        case kBackward:
            return currentStep == stepCount - 1;
        case kBackAndForth:
            return currentStep == 0 && pingPongDown == 0;
        default:
            return true;
    }
}

/// The product of two draws peaks at 0: small deviations are the likeliest.
void StepSequencer::DrawDeviations() {
    for (uint32_t i = 0; i < kMaxSteps; ++i) {
        const float first = 2.0f * prims::XorshiftUniform(randomState) - 1.0f;
        const float second = 2.0f * prims::XorshiftUniform(randomState) - 1.0f;
        SetParameterValue(StepDev1 + i, first * second);
    }
}

float StepSequencer::StepOutput() {
    const auto step = static_cast<uint32_t>(currentStep);
    const float position = Position(RandomAmount) * Value(StepDev1 + step) + stepValues[step];
    return parameters[StepVal1 + step].ValueOf(std::clamp(position, 0.0f, 1.0f));
}

void StepSequencer::Write(float* out, uint32_t count, float value) {
    if (!smoothOn) {
        std::fill_n(out, count, value);
        return;
    }
    if (count == 0)
        return;
    if (smootherJustOn) {
        smoother.Reset(value);
        smootherJustOn = false;
    }
    smoother.SetTarget(value);
    for (uint32_t i = 0; i < count; ++i)
        out[i] = smoother.Tick();
}

}  // namespace Quorvan::dsp
