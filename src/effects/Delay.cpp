#include "effects/Delay.h"

#include <algorithm>
#include <utility>

#include "effects/NoteValues.h"
#include "framework/ParameterTable.h"
#include "primitives/DryWetGains.h"

namespace Quorvan::dsp {

namespace {

constexpr float kLongestMs = 4000.0f;                          // unless DelayTimeMs reaches further
constexpr int32_t kSpareSamples = 10;                          // of a line, for interpolation
constexpr float kShortestNote = 0.0001f, kLongestNote = 4.0f;  // seconds
constexpr float kTriplet = 0.6666667f, kDotted = 1.5f;
/// Corners stay below half the rate, behind which the filters are unstable. Rates from 41 kHz on
/// never get there.
constexpr float kHighestCorner = 0.49f;

const ParameterTable& Table() {
    using P = ParameterSpec;
    constexpr uint32_t exponential = PotardKind::kExponential;
    constexpr uint32_t bipolarPolynomial = PotardKind::kBipolarPolynomial;
    static const ParameterTable table = {
        P::Curved("DelayTimeMs", exponential, 2.0f, 2000.0f, 3.0f),
        P::Linear("Feedback", 0.0f, 1.0f),
        P::Linear("Wet", 0.0f, 1.0f),
        P::Curved("HPFreq", exponential, 20.0f, 10000.0f, 6.0f),
        P::Curved("LPFreq", exponential, 250.0f, 20000.0f, 6.0f),
        P::Linear("StereoWidth", 0.0f, 0.2f),
        P::Linear("StereoWidthPP", 0.0f, 1.0f),
        P::Stepped("StereoMode", 2),
        P::Stepped("MidiSync", 2),
        P::Stepped("RateSyncedType", 3),
        P::Stepped("DelayTimeSynced", kNoteValues.size()),
        P::Curved("DelayFineMs", bipolarPolynomial, -50.0f, 50.0f, 3.0f).AtValue(0.0f),
        P::Linear("VibratoMaxAmount", 0.0f, 100.0f).AtValue(100.0f),
    };
    return table;
}

enum Row : uint32_t {
    kWetRow = 2,
    kTimeRow,
    kFeedbackRow,
    kHighPassRow,
    kLowPassRow,
    kWidthRow,
    kFineRow,
    kVibratoRow
};

/// Length in seconds of the note, or of the longest shorter one that lasts no more than 4 s. A
/// tempo that is not a number gives the shortest delay.
float NoteSeconds(float noteIndex, float tempo, int32_t rateType) {
    const float factor = rateType == 1 ? kTriplet : rateType == 2 ? kDotted : 1.0f;
    const auto last = static_cast<float>(kNoteValues.size() - 1);
    auto i = static_cast<size_t>(std::clamp(noteIndex, 0.0f, last));
    const auto seconds = [&] {
        return std::max(kShortestNote, 240.0f / tempo * kNoteValues[i]) * factor;
    };
    while (i > 0 && seconds() > kLongestNote)
        --i;
    return seconds();
}

bool HasRight(const ProcessBlock& block) {
    return block.numInputs > 1 && block.inputs[1] != nullptr;
}

}  // namespace

Delay::Delay(std::string moduleName) : UnitModule(std::move(moduleName), 10, 2, Table()) {}

void Delay::OnSetup(float rate, uint32_t blockSize) {
    blockFrames = blockSize;
    sampleRate = rate;
    inverseSampleRate = 1.0f / rate;
    samplesPerMs = rate * 0.001f;
    const Parameter& time = parameters[DelayTimeMs];
    const float maxDelayMs = std::max(time.maxValue, kLongestMs);
    const auto longest = static_cast<int32_t>(maxDelayMs * 0.001f * rate);
    const float longestRight = (parameters[StereoWidth].maxValue + 1.0f) * maxDelayMs * 0.001f;
    maxDelaySamples = static_cast<float>(longest);
    minDelaySamples = static_cast<float>(static_cast<int32_t>(time.minValue * rate * 0.001f));
    lines[0].Resize(longest + kSpareSamples, DelayLine::Clearing::BitByBit);
    lines[1].Resize(static_cast<int32_t>(longestRight * rate) + kSpareSamples,
                    DelayLine::Clearing::BitByBit);

    SetupSmoothers();
    for (AlignedVector* buffer : {&wetGain, &dryGain, &stereoOffset, &pingPongWidth})
        buffer->assign(blockSize, 0.0f);
    for (Buffers* buffers : {&delaySamples, &echo, &wet})
        for (AlignedVector& channel : *buffers)
            channel.assign(blockSize, 0.0f);
    ComputeHighPass();
    ComputeLowPass();
}

void Delay::SetupSmoothers() {
    wetSmoother.rampSteps = pingPongWidthSmoother.rampSteps = blockFrames;
    const auto setUp = [this](Smoother& smoother, uint32_t stepLength) {
        smoother.stepLength = stepLength;
        smoother.sampleRate = static_cast<double>(sampleRate);
        smoother.UpdateCoefficients();
    };
    const std::array<Smoother*, 4> ticksBySample{&delaySmoother, &stereoOffsetSmoother,
                                                 &wetSmoother, &pingPongWidthSmoother};
    for (Smoother* smoother : ticksBySample)
        setUp(*smoother, 1);
    for (const auto& [smoother, id] :
         {std::pair{&lowPassSmoother, LPFreq}, {&highPassSmoother, HPFreq}}) {
        smoother->range = static_cast<double>(parameters[id].maxValue - parameters[id].minValue);
        setUp(*smoother, blockFrames);
    }
}

void Delay::OnReset(bool) {
    for (DelayLine& line : lines)
        line.Clear();
    isSynced = Position(MidiSync) > 0.5f;
    delaySmoother.Reset(
        std::min(DelayInSamples(Value(DelayTimeMs), Value(DelayTimeSynced)), maxDelaySamples));
    stereoOffsetSmoother.Reset(Value(StereoWidth));
    wetSmoother.Reset(2.0f * Value(Wet));
    lowPassSmoother.Reset(Value(LPFreq));
    highPassSmoother.Reset(Value(HPFreq));
    lowPass.Clear();
    highPass.Clear();
}

bool Delay::UpdateParameters(ProcessBlock&) {
    if (IsChanged(StereoMode))
        isStereoMode = Value(StereoMode) < 0.5f;
    if (IsChanged(MidiSync))
        isSynced = Value(MidiSync) >= 0.5f;
    if (IsChanged(RateSyncedType))
        rateType = Index(RateSyncedType);
    if (IsChanged(VibratoMaxAmount))
        vibratoMs = Value(VibratoMaxAmount);
    return true;
}

bool Delay::OnProcess(ProcessBlock& block) {
    for (DelayLine& line : lines)
        line.Wipe();
    tempo = block.tempo;
    FillDelays(block);
    FillGains(block);
    feedback = parameters[Feedback].GetBlockValue(block, kFeedbackRow);
    UpdateFilters(block);
    const bool interpolate = Interpolates(block);
    const uint32_t chunk = ChunkLength(block.numFrames);
    for (uint32_t from = 0; from < block.numFrames; from += chunk)
        RunChunk(block, from, std::min(chunk, block.numFrames - from), interpolate);
    return true;
}

float Delay::DelayInSamples(float timeMs, float noteIndex) const {
    return isSynced ? NoteSeconds(noteIndex, tempo, rateType) * sampleRate : timeMs * samplesPerMs;
}

float Delay::TargetDelay(const ProcessBlock& block) {
    float delay = DelayInSamples(parameters[DelayTimeMs].GetBlockValue(block, kTimeRow),
                                 parameters[DelayTimeSynced].GetBlockValue(block, kTimeRow));
    delay += parameters[DelayFineMs].GetBlockValue(block, kFineRow) * samplesPerMs;
    if (IsRowActive(block, kVibratoRow))
        delay += samplesPerMs * vibratoMs * block.inputs[kVibratoRow][0];
    return std::clamp(delay, minDelaySamples, maxDelaySamples);
}

/// The glides run over the full block size however short the block is.
void Delay::FillDelays(const ProcessBlock& block) {
    delaySmoother.SetTarget(TargetDelay(block));
    delaySmoother.FillBlock(delaySamples[0].data(), blockFrames);
    if (isStereoMode) {
        stereoOffsetSmoother.SetTarget(parameters[StereoWidth].GetBlockValue(block, kWidthRow));
        stereoOffsetSmoother.FillBlock(stereoOffset.data(), blockFrames);
    } else {
        std::fill_n(stereoOffset.begin(), block.numFrames, 0.0f);
        pingPongWidthSmoother.SetTarget(parameters[StereoWidthPP].GetBlockValue(block, kWidthRow));
        pingPongWidthSmoother.FillBlock(pingPongWidth.data(), blockFrames);
    }
    for (uint32_t i = 0; i < block.numFrames; ++i)
        delaySamples[1][i] = (stereoOffset[i] + 1.0f) * delaySamples[0][i];
}

bool Delay::Interpolates(const ProcessBlock& block) const {
    return IsRowActive(block, kTimeRow) || IsRowActive(block, kVibratoRow) ||
           (isStereoMode && IsRowActive(block, kWidthRow)) || !delaySmoother.IsAtRest() ||
           !stereoOffsetSmoother.IsAtRest();
}

void Delay::FillGains(const ProcessBlock& block) {
    wetSmoother.SetTarget(2.0f * parameters[Wet].GetBlockValue(block, kWetRow));
    wetSmoother.FillBlock(wetGain.data(), blockFrames);
    SplitDryWet(wetGain.data(), dryGain.data(), block.numFrames);
}

void Delay::UpdateFilters(const ProcessBlock& block) {
    highPassSmoother.SetTarget(parameters[HPFreq].GetBlockValue(block, kHighPassRow));
    lowPassSmoother.SetTarget(parameters[LPFreq].GetBlockValue(block, kLowPassRow));
    const float highBefore = std::exchange(highPassHz, highPassSmoother.Tick());
    const float lowBefore = std::exchange(lowPassHz, lowPassSmoother.Tick());
    if (highPassHz != highBefore)
        ComputeHighPass();
    if (lowPassHz != lowBefore)
        ComputeLowPass();
}

void Delay::ComputeHighPass() {
    const float hertz = std::min(highPassHz, kHighestCorner * sampleRate);
    const float w = 6.2831855f * hertz * inverseSampleRate;
    highPass.coefficients = BiquadCoefficients::HighPass(w, BiquadCoefficients::FlatAlpha(w));
}

void Delay::ComputeLowPass() {
    const float hertz = std::min(lowPassHz, kHighestCorner * sampleRate);
    const float w = 6.2831855f * hertz * inverseSampleRate;
    lowPass.coefficients = BiquadCoefficients::LowPass(w, BiquadCoefficients::FlatAlpha(w));
}

/// So many samples that the lines may be read ahead of what is written in the chunk. Delays from 2
/// ms on leave a block of 1 ms whole; a glide that a reset has started from less does not.
uint32_t Delay::ChunkLength(uint32_t frames) const {
    const auto& delays = delaySamples[0];
    float shortest = delays[0];
    for (uint32_t i = 1; i < frames; ++i)
        shortest = std::min(shortest, delays[i]);
    return std::max(static_cast<uint32_t>(std::max(shortest, 2.0f)) - 1, 1u);
}

void Delay::RunChunk(const ProcessBlock& block, uint32_t from, uint32_t count, bool interpolate) {
    ReadLines(from, count, interpolate);
    Filter(from, count);
    if (isStereoMode)
        EchoStereo(block, from, count);
    else
        EchoPingPong(block, from, count);
    Mix(block, from, count);
}

/// The lines still stand at the chunk's start, so that later samples are nearer by their number.
void Delay::ReadLines(uint32_t from, uint32_t count, bool interpolate) {
    for (uint32_t c = 0; c < kChannels; ++c) {
        DelayLine& line = lines[c];
        const float* const delays = delaySamples[c].data() + from;
        float* const out = echo[c].data() + from;
        for (uint32_t i = 0; i < count; ++i) {
            const auto whole = static_cast<int32_t>(delays[i]);
            const int32_t back = whole - static_cast<int32_t>(i);
            const float fraction = delays[i] - static_cast<float>(whole);
            out[i] = interpolate ? line.Read(back, fraction, DelayLine::kPolynomial)
                                 : line.Read(back, 0.0f, DelayLine::kNone);
        }
    }
}

void Delay::Filter(uint32_t from, uint32_t count) {
    for (uint32_t c = 0; c < kChannels; ++c)
        std::copy_n(echo[c].data() + from, count, wet[c].data() + from);
    const std::array<float*, kChannels> both{wet[0].data() + from, wet[1].data() + from};
    highPass.Process(both, count);
    lowPass.Process(both, count);
}

void Delay::EchoStereo(const ProcessBlock& block, uint32_t from, uint32_t count) {
    const std::array<const float*, kChannels> inputs{block.inputs[0],
                                                     HasRight(block) ? block.inputs[1] : nullptr};
    for (uint32_t c = 0; c < kChannels; ++c)
        for (uint32_t i = from; i < from + count; ++i)
            lines[c].Write(wet[c][i] * feedback + (inputs[c] != nullptr ? inputs[c][i] : 0.0f));
}

/// What the right line holds has passed the left filters: it is heard, and goes back to the left
/// line, as it was read.
void Delay::EchoPingPong(const ProcessBlock& block, uint32_t from, uint32_t count) {
    const float* const left = block.inputs[0];
    const float* const right = HasRight(block) ? block.inputs[1] : nullptr;
    for (uint32_t i = from; i < from + count; ++i) {
        const float first = wet[0][i], second = echo[1][i];
        const float sum = right != nullptr ? left[i] + right[i] : left[i];
        lines[1].Write(first);
        lines[0].Write(0.5f * sum + second * feedback);
        const float apart = pingPongWidth[i];
        const float middle = (first + second) * (1.0f - apart) * 0.5f;
        wet[0][i] = apart * first + middle;
        wet[1][i] = apart * second + middle;
    }
}

void Delay::Mix(const ProcessBlock& block, uint32_t from, uint32_t count) const {
    const float* const left = block.inputs[0];
    const float* const right = HasRight(block) ? block.inputs[1] : nullptr;
    float* const outLeft = block.outputs[0];
    float* const outRight = block.numOutputs > 1 ? block.outputs[1] : nullptr;
    for (uint32_t i = from; i < from + count; ++i) {
        const float inLeft = left[i], inRight = right != nullptr ? right[i] : 0.0f;
        outLeft[i] = wet[0][i] * wetGain[i] + inLeft * dryGain[i];
        if (outRight != nullptr)
            outRight[i] = wet[1][i] * wetGain[i] + inRight * dryGain[i];
    }
}

}  // namespace Quorvan::dsp
