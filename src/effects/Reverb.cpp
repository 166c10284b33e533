#include "effects/Reverb.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

#include "effects/TankLengths.h"
#include "framework/ParameterTable.h"
#include "primitives/BlockTests.h"
#include "primitives/Decibels.h"
#include "primitives/FiniteSamples.h"
#include "primitives/UnpairedSine.h"

namespace Quorvan::dsp {

namespace {

constexpr float kQuarterTurn = 1.5707964f;
constexpr float kPlateGain = 0.26801017f;  // of the wet sum
constexpr float kEarlySizeScale = 0.01f;   // of the parameter on use
constexpr double kShortestGlide = 1e-12;   // seconds
/// The low-pass stays below half the rate, behind which it is unstable. Rates from 41 kHz on never
/// get there.
constexpr float kHighestCorner = 0.49f;

const ParameterTable& Table() {
    using P = ParameterSpec;
    constexpr uint32_t exponential = PotardKind::kExponential;
    static const ParameterTable table = {
        P::Curved("LPBandWith", exponential, 100.0f, 20000.0f, 6.0f).AtPosition(0.9995f),
        P::Curved("HPBandWith", exponential, 30.0f, 10000.0f, 6.0f).AtPosition(0.0005f),
        P::Linear("Wet", 0.0f, 1.0f).AtPosition(0.5f),
        P::Stepped("EarlyOn", 2),
        P::Raw("EarlySize").AtValue(1.0f),
        P::Linear("EarlyMix", 0.0f, 1.0f),
        P::Stepped("InvertEarly", 2),
        P::Linear("OutputGain", -20.0f, 20.0f).AtValue(0.0f),
        P::Linear("MSMix", 0.0f, 0.5f).AtValue(0.5f),
        P::Linear("SmoothTimeDelayCont", 0.0f, 1.0f).AtValue(0.4f),
    };
    return table;
}

enum Row : uint32_t { kWetRow = 2, kLowPassRow, kHighPassRow, kFirstPlateRow };
/// Inputs of the core behind its audio one.
constexpr uint32_t kPlateRows = 5;

}  // namespace

Reverb::Reverb(std::string moduleName)
    : ModuleContainer(std::move(moduleName), 10, 2, Table(), std::tuple("")) {}

void Reverb::OnSetup(float rate, uint32_t blockSize) {
    sampleRate = rate > 0.0f ? rate : TankLengths::kReferenceRate;
    early.Setup(sampleRate * TankLengths::kPerReferenceRate);
    const auto setUp = [this](SmootherLPF& smoother, uint32_t stepLength) {
        smoother.stepLength = stepLength;
        smoother.sampleRate = static_cast<double>(sampleRate);
        smoother.UpdateCoefficients();
    };
    setUp(wetSmoother, 1);
    wetSmoother.rampSteps = blockSize;
    setUp(earlySizeSmoother, 1);
    for (SmootherLPF* smoother : {&earlyMixSmoother, &outputGainSmoother, &msSmoother})
        setUp(*smoother, blockSize);
    for (AlignedVector* buffer : {&wetGain, &dryGain, &monoFeed})
        buffer->assign(blockSize, 0.0f);
    for (Buffers* buffers : {&plate, &reflections, &filtered})
        for (AlignedVector& side : *buffers)
            side.assign(blockSize, 0.0f);
}

/// The low-pass goes on from what it holds, unless that has overflowed.
void Reverb::OnReset(bool) {
    CopyFinite(lowPassState.data(), kSides, lowPassState.data());
    highPassState.fill(0.0f);
    early.Clear();
    wetSmoother.Reset(Value(Wet));
    outputGainSmoother.Reset(Value(OutputGain));
    earlyMixSmoother.Reset(Value(EarlyMix));
    earlySizeSmoother.Reset(Value(EarlySize) * kEarlySizeScale);
    msSmoother.Reset(Value(MSMix));
    sideGain = msSmoother.Tick();
    midGain = 1.0f - sideGain;
    early.SetSize(earlySizeSmoother.Tick());
    outputGain = DecibelsToGain(Value(OutputGain));
}

bool Reverb::UpdateParameters(ProcessBlock&) {
    UpdateSides();
    if (IsChanged(OutputGain))
        outputGainSmoother.SetTarget(Value(OutputGain));
    UpdateEarly();
    if (IsChanged(SmoothTimeDelayCont)) {
        const auto seconds = static_cast<double>(Value(SmoothTimeDelayCont));
        earlySizeSmoother.time = std::max(seconds, kShortestGlide);
        earlySizeSmoother.UpdateCoefficients();
    }
    if (!outputGainSmoother.IsAtRest())
        outputGain = DecibelsToGain(outputGainSmoother.Tick());
    return true;
}

bool Reverb::OnProcess(ProcessBlock& block) {
    FillMix(block);
    UpdateFilters(block);
    FilterInput(block);
    if (earlyOn)
        RunEarly(block.numFrames);
    RunPlate(block);
    Mix(block);
    return true;
}

void Reverb::UpdateSides() {
    if (IsChanged(MSMix))
        msSmoother.SetTarget(Value(MSMix));
    if (msSmoother.IsAtRest())
        return;
    sideGain = msSmoother.Tick();
    midGain = 1.0f - sideGain;
}

/// While they are off their settings wait; switching takes them all.
void Reverb::UpdateEarly() {
    const bool switched = IsChanged(EarlyOn);
    if (switched)
        earlyOn = Value(EarlyOn) >= 0.5f;
    if (earlyOn || switched) {
        if (switched || IsChanged(EarlyMix))
            earlyMixSmoother.SetTarget(Value(EarlyMix));
        if (switched || IsChanged(EarlySize))
            earlySizeSmoother.SetTarget(Value(EarlySize) * kEarlySizeScale);
        if (switched || IsChanged(InvertEarly))
            early.SetInverted(Value(InvertEarly) > 0.5f);
        earlyMix = earlyMixSmoother.Tick();
    }
    if (!earlyOn)
        earlyMix = 0.0f;
}

/// Sine and cosine of each frame; while the mix rests, once for all.
void Reverb::FillMix(const ProcessBlock& block) {
    const uint32_t count = block.numFrames;
    wetSmoother.SetTarget(ParameterAt(Wet).GetBlockValue(block, kWetRow));
    wetSmoother.FillBlock(wetGain.data(), count);
    if (count == 0)
        return;
    if (IsConstant(wetGain.data(), count)) {
        const float angle = wetGain[0] * kQuarterTurn;
        std::fill_n(wetGain.begin(), count, UnpairedSine(angle));
        std::fill_n(dryGain.begin(), count, std::cos(angle));
        return;
    }
    for (uint32_t n = 0; n < count; ++n) {
        const float angle = wetGain[n] * kQuarterTurn;
        wetGain[n] = UnpairedSine(angle);
        dryGain[n] = std::cos(angle);
    }
}

void Reverb::UpdateFilters(const ProcessBlock& block) {
    const float highest = kHighestCorner * sampleRate;
    const float low = std::min(ParameterAt(LPBandWith).GetBlockValue(block, kLowPassRow), highest);
    const float high = ParameterAt(HPBandWith).GetBlockValue(block, kHighPassRow);
    if (std::exchange(lowPassHz, low) != low || needsFullUpdate)
        lowPass = OnePole::LowPass(low, sampleRate);
    if (std::exchange(highPassHz, high) != high || needsFullUpdate)
        highPass = OnePole::HighPass(high, sampleRate);
}

/// Both sides in one loop, since each filter waits for itself.
void Reverb::FilterInput(const ProcessBlock& block) {
    const float* const left = block.inputs[0];
    const float* const right = block.inputs[1];
    const OnePole low = lowPass, high = highPass;
    std::array<float, kSides> lowState = lowPassState, highState = highPassState;
    for (uint32_t n = 0; n < block.numFrames; ++n) {
        const float a = high.Tick(low.Tick(left[n], lowState[0]), highState[0]);
        const float b = high.Tick(low.Tick(right[n], lowState[1]), highState[1]);
        filtered[0][n] = a;
        filtered[1][n] = b;
        monoFeed[n] = (a + b) * 0.5f;
    }
    lowPassState = lowState;
    highPassState = highState;
}

/// The reflections move at block boundaries, by as many ticks as the block has frames.
void Reverb::RunEarly(uint32_t count) {
    early.Run(filtered[0].data(), filtered[1].data(),
              {reflections[0].data(), reflections[1].data()}, count);
    if (earlySizeSmoother.IsAtRest())
        return;
    float size = 0.0f;
    for (uint32_t n = 0; n < count; ++n)
        size = earlySizeSmoother.Tick();
    early.SetSize(size);
}

void Reverb::RunPlate(const ProcessBlock& block) {
    std::array<float*, 1 + kPlateRows> inputs{monoFeed.data()};
    for (uint32_t i = 0; i < kPlateRows; ++i) {
        const uint32_t channel = kFirstPlateRow + i;
        inputs[1 + i] = channel < block.numInputs ? block.inputs[channel] : nullptr;
    }
    std::array<float*, kSides> outputs{plate[0].data(), plate[1].data()};
    ProcessBlock inner = block;
    inner.inputs = inputs.data();
    inner.numInputs = static_cast<uint32_t>(inputs.size());
    inner.outputs = outputs.data();
    inner.numOutputs = kSides;
    Child<0>().Process(inner);
}

void Reverb::Mix(const ProcessBlock& block) {
    const float plateShare = 1.0f - earlyMix, earlyShare = earlyMix;
    const float toMid = midGain, toSide = sideGain, level = outputGain;
    for (uint32_t n = 0; n < block.numFrames; ++n) {
        const float l = plateShare * plate[0][n] + earlyShare * reflections[0][n];
        const float r = plateShare * plate[1][n] + earlyShare * reflections[1][n];
        const float mid = (l + r) * toMid;
        const float side = (l - r) * toSide;
        const float wet = wetGain[n], dry = dryGain[n];
        const float left = dry * block.inputs[0][n], right = dry * block.inputs[1][n];
        block.outputs[0][n] = ((side + mid) * kPlateGain * wet + left) * level;
        block.outputs[1][n] = ((mid - side) * kPlateGain * wet + right) * level;
    }
}

}  // namespace Quorvan::dsp
