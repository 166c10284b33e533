#include "effects/MultiModeFilter.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "framework/ParameterTable.h"
#include "primitives/Decibels.h"

namespace Quorvan::dsp {

namespace {

constexpr float kPi = 3.1415927f;
/// Half a corner in radians a sample stays below a quarter turn, behind which the sections are
/// unstable. Corners up to 20 kHz never get there at rates from 41 kHz on.
constexpr float kHighestHalfCorner = 1.5393804f;  // 0.49 of half a turn
constexpr float kLowestComb = 20.0f;              // hertz, sets the length of the rings
constexpr float kHighestComb = 2000.0f;           // hertz
constexpr float kSpareSamples = 10.0f;            // of the rings

const ParameterTable& Table() {
    using P = ParameterSpec;
    constexpr uint32_t exponential = PotardKind::kExponential;
    static const ParameterTable table = {
        P::Linear("Wet", 0.0f, 1.0f),
        P::Stepped("Mode", 5),
        P::Curved("Freq", exponential, 20.0f, 20000.0f, 6.0f),
        P::Curved("Q", exponential, 0.5f, 15.0f, 5.0f),
        P::Stepped("Slope", 3, 12.0f, 12.0f),
        P::Curved("CombFreq", exponential, kLowestComb, kHighestComb, 6.0f),
    };
    return table;
}

enum Row : uint32_t { kWetRow = 2, kFrequencyRow, kResonanceRow };

/// Output gains in dB at the points of Q below, joined by straight lines.
using GainRow = std::array<float, 6>;
constexpr GainRow kGainPoints{0.5f, 1.25f, 2.5f, 5.0f, 10.0f, 15.0f};
constexpr std::array<GainRow, 3> kPassGains{{{0.0f, -1.0f, -2.0f, -3.0f, -5.0f, -6.0f},
                                             {0.0f, -1.5f, -3.0f, -11.0f, -22.0f, -28.0f},
                                             {0.0f, -3.0f, -10.0f, -22.0f, -36.0f, -48.0f}}};
constexpr std::array<GainRow, 3> kBandGains{{{6.0f, 4.0f, 2.0f, -2.0f, -6.0f, -8.0f},
                                             {12.0f, 6.0f, 0.0f, -12.0f, -22.0f, -24.0f},
                                             {20.0f, 10.0f, -3.0f, -18.0f, -36.0f, -48.0f}}};
constexpr GainRow kCombGains{0.0f, -1.0f, -2.0f, -4.0f, -7.0f, -14.0f};

float InterpolateDecibels(const GainRow& row, float q) {
    if (q <= kGainPoints.front())
        return row.front();
    if (q > kGainPoints.back())
        return row.back();
    size_t k = 1;
    while (kGainPoints[k] < q)
        ++k;
    const float share = (q - kGainPoints[k - 1]) / (kGainPoints[k] - kGainPoints[k - 1]);
    return row[k - 1] + (row[k] - row[k - 1]) * share;
}

/// Straight line from a block's old coefficient to its new one.
void Ramp(float* out, uint32_t count, float from, float to, float inverseSteps) {
    const float step = (to - from) * inverseSteps;
    float value = from;
    for (uint32_t i = 0; i < count; ++i)
        out[i] = value += step;
}

}  // namespace

MultiModeFilter::MultiModeFilter(std::string moduleName)
    : UnitModule(std::move(moduleName), 5, 2, Table()) {}

void MultiModeFilter::OnSetup(float rate, uint32_t blockFrames) {
    sampleRate = rate;
    inverseSampleRate = 1.0f / rate;
    blockSize = blockFrames;
    inverseBlockSize = 1.0f / static_cast<float>(blockFrames);
    for (DelayLine& line : delayLines)
        line.Resize(static_cast<int32_t>(rate / kLowestComb + kSpareSamples));

    const std::array<Smoother*, 4> smoothers = {&wetSmoother, &gainSmoother, &frequencySmoother,
                                                &delaySmoother};
    for (Smoother* smoother : smoothers)
        smoother->sampleRate = static_cast<double>(rate);
    wetSmoother.rampSteps = gainSmoother.rampSteps = blockFrames;
    frequencySmoother.stepLength = blockFrames;
    delaySmoother.range = static_cast<double>(rate / kLowestComb - rate / kHighestComb);
    for (Smoother* smoother : smoothers)
        smoother->UpdateCoefficients();

    for (AlignedVector* buffer :
         {&wetBuffer, &gainBuffer, &delayBuffer, &a1Ramp, &a2Ramp, &a3Ramp, &bandRamp})
        buffer->assign(blockFrames, 0.0f);
}

void MultiModeFilter::OnReset(bool) {
    ClearLines();
    ReadMode();
    ReadStages();
    ClearState();
    wetSmoother.Reset(Value(Wet));
    delaySmoother.Reset(sampleRate / Value(CombFreq));
    SetResonance(Value(Q));
    outputGain = OutputGain(mode, stages, resonance);
    gainSmoother.Reset(outputGain);
    frequencySmoother.Reset(Value(Freq));
    frequency = frequencySmoother.Tick();
    UpdateCoefficients();
}

bool MultiModeFilter::UpdateParameters(ProcessBlock&) {
    if (IsChanged(Mode))
        ReadMode();
    if (IsChanged(Slope))
        ReadStages();
    if (IsChanged(Mode) || IsChanged(Slope))
        ClearState();
    return true;
}

bool MultiModeFilter::OnProcess(ProcessBlock& block) {
    wetSmoother.SetTarget(parameters[Wet].GetBlockValue(block, kWetRow));
    wetSmoother.FillBlock(wetBuffer.data(), block.numFrames);
    if (combMode)
        RunComb(block);
    else
        RunStateVariable(block);
    return true;
}

void MultiModeFilter::ReadMode() {
    mode = Index(Mode);
    combRecursive = mode == kCombFeedback;
    combMode = combRecursive || mode == kCombFeedForward;
}

void MultiModeFilter::ClearState() {
    sections = {};
    if (!combMode)
        return;
    delaySmoother.Reset(sampleRate / Value(CombFreq));
    ClearLines();
}

void MultiModeFilter::ClearLines() {
    for (DelayLine& line : delayLines)
        line.Clear();
}

void MultiModeFilter::SetResonance(float q) {
    resonance = q;
    inverseResonance = 1.0f / q;
}

void MultiModeFilter::UpdateCoefficients() {
    if (combMode) {
        combFeedback = resonancePosition * kDeepestComb;
        return;
    }
    const float g = std::tan(std::min(frequency * kPi * inverseSampleRate, kHighestHalfCorner));
    a1 = 1.0f / ((g + inverseResonance) * g + 1.0f);
    a2 = a1 * g;
    a3 = a2 * g;
    mixInput = mode == kHighPass ? 1.0f : 0.0f;
    mixBand = mode == kHighPass ? -inverseResonance : mode == kBandPass ? 1.0f : 0.0f;
    mixLow = mode == kHighPass ? -1.0f : mode == kBandPass ? 0.0f : 1.0f;
}

float MultiModeFilter::OutputGain(int32_t mode, int32_t stages, float q) {
    if (mode == kCombFeedForward)
        return 1.0f;
    const auto section = static_cast<size_t>(stages - 1);
    const GainRow& row = mode == kCombFeedback ? kCombGains
                         : mode == kBandPass   ? kBandGains[section]
                                               : kPassGains[section];
    return DecibelsToGain(InterpolateDecibels(row, q));
}

/// A fit over the feedback.
float MultiModeFilter::CombGain(float depth) {
    const float f = depth;
    return 1.00086f - 0.5438554f * f + 1.296221f * f * f - 1.560468f * f * f * f;
}

void MultiModeFilter::RunStateVariable(ProcessBlock& block) {
    frequencySmoother.SetTarget(parameters[Freq].GetBlockValue(block, kFrequencyRow));
    frequency = frequencySmoother.Tick();
    SetResonance(parameters[Q].GetBlockValue(block, kResonanceRow));
    RampCoefficients(block);
    outputGain = OutputGain(mode, stages, resonance);
    gainSmoother.SetTarget(outputGain);
    gainSmoother.FillBlock(gainBuffer.data(), block.numFrames);
    if (stages == 1)
        RunSections<1>(block);
    else if (stages == 2)
        RunSections<2>(block);
    else
        RunSections<3>(block);
}

void MultiModeFilter::RampCoefficients(const ProcessBlock& block) {
    const float old1 = a1, old2 = a2, old3 = a3, oldBand = mixBand;
    UpdateCoefficients();
    const uint32_t count = block.numFrames;
    Ramp(a1Ramp.data(), count, old1, a1, inverseBlockSize);
    Ramp(a2Ramp.data(), count, old2, a2, inverseBlockSize);
    Ramp(a3Ramp.data(), count, old3, a3, inverseBlockSize);
    Ramp(bandRamp.data(), count, oldBand, mixBand, inverseBlockSize);
}

/// Both channels side by side: their recursions do not wait for each other.
template <uint32_t kStages>
void MultiModeFilter::RunSections(const ProcessBlock& block) {
    auto local = sections;
    for (uint32_t i = 0; i < block.numFrames; ++i) {
        const float wet = wetBuffer[i];
        const float gain = wet * gainBuffer[i];
        for (uint32_t c = 0; c < kChannels; ++c) {
            const float input = block.inputs[c][i];
            float x = input;
            for (uint32_t s = 0; s < kStages; ++s)
                x = RunSection(local[c][s], x, i);
            block.outputs[c][i] = gain * x + (1.0f - wet) * input;
        }
    }
    sections = local;
}

float MultiModeFilter::RunSection(Section& section, float x, uint32_t i) const {
    const float hp = x - section.ic2;
    const float bp = a1Ramp[i] * section.ic1 + a2Ramp[i] * hp;
    const float lp = section.ic2 + a2Ramp[i] * section.ic1 + a3Ramp[i] * hp;
    section.ic1 = 2.0f * bp - section.ic1;
    section.ic2 = 2.0f * lp - section.ic2;
    return bandRamp[i] * bp + mixInput * x + mixLow * lp;
}

void MultiModeFilter::RunComb(ProcessBlock& block) {
    const uint32_t count = block.numFrames;
    delaySmoother.SetTarget(sampleRate / parameters[CombFreq].GetBlockValue(block, kFrequencyRow));
    delaySmoother.FillBlock(delayBuffer.data(), count);
    resonancePosition = parameters[Q].GetBlockNormalized(block, kResonanceRow);
    UpdateCoefficients();
    if (combRecursive) {
        outputGain = CombGain(combFeedback);
        gainSmoother.SetTarget(outputGain);
        gainSmoother.FillBlock(gainBuffer.data(), count);
    }
    for (uint32_t c = 0; c < kChannels; ++c) {
        if (combRecursive)
            RunRing<true>(c, block);
        else
            RunRing<false>(c, block);
    }
}

template <bool kRecursive>
void MultiModeFilter::RunRing(uint32_t channel, const ProcessBlock& block) {
    DelayLine& line = delayLines[channel];
    const float* const in = block.inputs[channel];
    float* const out = block.outputs[channel];
    int32_t write = line.writeIndex;
    for (uint32_t i = 0; i < block.numFrames; ++i) {
        int32_t read = write - static_cast<int32_t>(delayBuffer[i]);
        while (read < 0)
            read += line.size;
        while (read >= line.size)
            read -= line.size;
        const float input = in[i];
        const float wet = wetBuffer[i];
        const float y = line.data[read] * combFeedback + input;
        line.data[write] = kRecursive ? y : input;
        out[i] = (kRecursive ? y * gainBuffer[i] : y) * wet + (1.0f - wet) * input;
        write = write + 1 == line.size ? 0 : write + 1;
    }
    line.writeIndex = write;
}

}  // namespace Quorvan::dsp
