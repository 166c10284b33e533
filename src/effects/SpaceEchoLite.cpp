#include "effects/SpaceEchoLite.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "effects/NoteValues.h"
#include "effects/StereoInputs.h"
#include "framework/ParameterTable.h"
#include "primitives/Decibels.h"
#include "primitives/DryWetGains.h"
#include "primitives/UnpairedSine.h"

namespace Quorvan::dsp {

namespace {

const ParameterTable& Table() {
    using P = ParameterSpec;
    constexpr uint32_t exponential = PotardKind::kExponential;
    constexpr uint32_t bipolarExp = PotardKind::kBipolarExp;
    constexpr uint32_t bipolarPolynomial = PotardKind::kBipolarPolynomial;
    constexpr uint32_t polynomial = PotardKind::kPolynomial;
    static const ParameterTable table = {
        P::Linear("InputVolume", -12.0f, 12.0f),
        P::Curved("DelayTime", polynomial, 10.0f, 1000.0f, 3.0f),
        P::Curved("DelayTimeFine", bipolarPolynomial, -50.0f, 50.0f, 3.0f),
        P::Linear("Intensity", 0.0f, 1.2f),
        P::Curved("DryWet", bipolarExp, 0.0f, 1.0f, -2.0f),
        P::Stepped("DelayTimeType", 4),
        P::Stepped("DelayTimeSynced", kNoteValues.size()),
        P::Stepped("DelayType", 2),
        P::Raw("StereoWidth"),
        P::Raw("StereoWidthPP"),
        P::Curved("LPFreq", exponential, 250.0f, 20000.0f, 6.0f).AtPosition(1.0f),
        P::Curved("HPFreq", exponential, 20.0f, 10000.0f, 6.0f).AtPosition(0.0f),
        P::Raw("PeakMeter"),
        P::Linear("ConfInGainCompensated", -36.0f, 36.0f).AtValue(0.0f),
    };
    return table;
}

enum Row : uint32_t {
    kDryWetRow = 2,
    kTimeRow,
    kFineRow,
    kIntensityRow,
    kInputRow,
    kWidthRow,
    kHighPassRow,
    kLowPassRow
};

constexpr float kLoopGain = 0.915f;    // at an Intensity of 1
constexpr float kWidestShare = 0.2f;   // of the delay
constexpr float kUnityGainDb = 20.0f;  // of the tape, at a ConfInGainCompensated of 0
constexpr float kTapeDrive = 1.08f;    // into the saturation
constexpr float kOverload = 0.4f;      // level that the meter lights up at
constexpr float kTriplet = 0.6666667f, kDotted = 1.5f;

// Corners in radians a second.
constexpr float kBumpCorner = 628.31854f;  // 100 Hz
constexpr float kShelfCorner = 17592.92f;  // 2800 Hz
// The record shelf lifts the top by 6 dB, the playback shelf takes it back.
constexpr float kRecordAmplitude = 1.4125376f, kRecordSlope = 1.828465f;
constexpr float kPlaybackAmplitude = 0.70794576f, kPlaybackSlope = 1.2944541f;

}  // namespace

SpaceEchoLite::SpaceEchoLite(std::string moduleName)
    : UnitModule(std::move(moduleName), 10, 2, Table()), envelope("EnvFollower") {
    envelope.SetParameterValue(EnvFollower::Attack, 0.001f);
    envelope.SetParameterValue(EnvFollower::Release, 0.5f);
    envelope.SetParameterNormalized(EnvFollower::StereoInput, 0.0f);
}

void SpaceEchoLite::OnSetup(float rate, uint32_t blockSize) {
    blockFrames = blockSize;
    sampleRate = rate;
    inverseSampleRate = 1.0f / rate;
    samplesPerMs = rate * 0.001f;
    for (AlignedVector* buffer :
         {&pingPongWidth, &wetGain, &dryGain, &inputGain, &envelopeIn, &envelopeOut})
        buffer->assign(blockSize, 0.0f);

    for (SmootherInterpLPF* smoother :
         {&intensitySmoother, &widthSmoother, &pingPongSmoother, &inputSmoother, &wetSmoother}) {
        smoother->stepLength = 1;
        smoother->sampleRate = static_cast<double>(rate);
        smoother->rampSteps = blockSize;
        smoother->UpdateCoefficients();
    }
    for (const auto& [smoother, id] :
         {std::pair{&lowPassSmoother, LPFreq}, {&highPassSmoother, HPFreq}}) {
        smoother->stepLength = blockSize;
        smoother->sampleRate = static_cast<double>(rate);
        smoother->range = static_cast<double>(parameters[id].maxValue - parameters[id].minValue);
        smoother->UpdateCoefficients();
    }
    highPassHz = lowPassHz = 0.0f;
    envelope.Setup(rate, blockSize);

    transport.Setup(rate, blockSize);
    headLoss.Setup(rate);
    for (uint32_t c = 0; c < kChannels; ++c) {
        headGap[c].Setup(rate);
        dcBlock[c].Setup(rate);
    }
    const float bumpW = kBumpCorner * inverseSampleRate;
    const float shelfW = kShelfCorner * inverseSampleRate;
    using B = BiquadCoefficients;
    bump.coefficients = B::HighPass(bumpW, UnpairedSine(bumpW));
    recordShelf.coefficients = B::HighShelf(shelfW, kRecordAmplitude, kRecordSlope);
    playbackShelf.coefficients = B::HighShelf(shelfW, kPlaybackAmplitude, kPlaybackSlope);
}

void SpaceEchoLite::OnReset(bool) {
    intensitySmoother.Reset(Value(Intensity));
    wetSmoother.Reset(Value(DryWet));
    inputSmoother.Reset(DecibelsToGain(Value(InputVolume)));
    for (AlignedVector* buffer :
         {&pingPongWidth, &wetGain, &dryGain, &inputGain, &envelopeIn, &envelopeOut})
        std::fill(buffer->begin(), buffer->end(), 0.0f);
    delayType = Index(DelayType);
    rateType = Index(DelayTimeType);
    envelope.Reset(true);
    const float width = delayType == 0 ? Value(StereoWidth) : 0.0f;
    transport.Reset(Delays(Value(DelayTime), Value(DelayTimeSynced), Value(DelayTimeFine),
                           1.0f + kWidestShare * width));
    for (StereoBiquad* filter : {&highPass, &lowPass, &recordShelf, &playbackShelf, &bump})
        filter->Clear();
    headLoss.Clear();
    for (uint32_t c = 0; c < kChannels; ++c) {
        headGap[c].Clear();
        dcBlock[c].Clear();
    }
}

bool SpaceEchoLite::UpdateParameters(ProcessBlock& block) {
    if (IsChanged(ConfInGainCompensated)) {
        const float gainDb = Value(ConfInGainCompensated) + kUnityGainDb;
        inGain = DecibelsToGain(gainDb);
        outGain = DecibelsToGain(-gainDb);
    }
    if (IsChanged(DelayType))
        delayType = Index(DelayType);
    if (IsChanged(DelayTimeType))
        rateType = Index(DelayTimeType);
    intensitySmoother.SetTarget(kLoopGain *
                                parameters[Intensity].GetBlockValue(block, kIntensityRow));
    wetSmoother.SetTarget(2.0f * parameters[DryWet].GetBlockValue(block, kDryWetRow));
    inputSmoother.SetTarget(
        DecibelsToGain(parameters[InputVolume].GetBlockValue(block, kInputRow)));
    UpdateFilters(block);
    UpdateWidths(block);
    return true;
}

bool SpaceEchoLite::OnProcess(ProcessBlock& block) {
    tempo = block.tempo;
    const float widthFactor = 1.0f + kWidestShare * widthSmoother.Tick();
    transport.BeginBlock(
        Delays(parameters[DelayTime].GetBlockValue(block, kTimeRow),
               parameters[DelayTimeSynced].GetBlockValue(block, kTimeRow),
               parameters[DelayTimeFine].GetBlockValue(block, kFineRow), widthFactor),
        block.numFrames);
    FillGains(block.numFrames);
    for (uint32_t at = 0; at < block.numFrames; at += kChunk)
        RunChunk(block, at, std::min(kChunk, block.numFrames - at));
    FollowLevel(block);
    return true;
}

void SpaceEchoLite::UpdateFilters(ProcessBlock& block) {
    const float high = parameters[HPFreq].GetBlockValue(block, kHighPassRow);
    const float low = parameters[LPFreq].GetBlockValue(block, kLowPassRow);
    if (needsFullUpdate) {
        highPassSmoother.Reset(high);
        lowPassSmoother.Reset(low);
    } else {
        highPassSmoother.SetTarget(high);
        lowPassSmoother.SetTarget(low);
    }
    const float highBefore = std::exchange(highPassHz, highPassSmoother.Tick());
    const float lowBefore = std::exchange(lowPassHz, lowPassSmoother.Tick());
    using B = BiquadCoefficients;
    if (highPassHz != highBefore) {
        const float w = B::StableCorner(highPassHz, inverseSampleRate);
        highPass.coefficients = B::HighPass(w, B::FlatAlpha(w));
    }
    if (lowPassHz != lowBefore) {
        const float w = B::StableCorner(lowPassHz, inverseSampleRate);
        lowPass.coefficients = B::LowPass(w, B::FlatAlpha(w));
    }
}

void SpaceEchoLite::UpdateWidths(ProcessBlock& block) {
    const bool pingPong = IsPingPong();
    pingPongSmoother.SetTarget(pingPong ? parameters[StereoWidthPP].GetBlockValue(block, kWidthRow)
                                        : 0.0f);
    widthSmoother.SetTarget(pingPong ? 0.0f
                                     : parameters[StereoWidth].GetBlockValue(block, kWidthRow));
}

std::array<float, SpaceEchoLite::kChannels> SpaceEchoLite::Delays(float time, float note,
                                                                  float fineMs,
                                                                  float widthFactor) const {
    if (rateType == 0) {
        const float base = (time + fineMs) * samplesPerMs;
        return {base, base * widthFactor};
    }
    const float wholeNotes = kNoteValues[static_cast<size_t>(note)];
    float seconds = std::clamp(60.0f / tempo * wholeNotes * 4.0f, TapeTransport::kShortestSeconds,
                               TapeTransport::kLongestSeconds);
    if (rateType == 2)
        seconds *= kTriplet;
    else if (rateType == 3)
        seconds *= kDotted;
    const float base = (seconds + fineMs * 0.001f) * sampleRate;
    return {base, base * widthFactor};
}

void SpaceEchoLite::FillGains(uint32_t count) {
    pingPongSmoother.FillBlock(pingPongWidth.data(), blockFrames);
    inputSmoother.FillBlock(inputGain.data(), blockFrames);
    wetSmoother.FillBlock(wetGain.data(), blockFrames);
    SplitDryWet(wetGain.data(), dryGain.data(), count);
}

/// Measures what was recorded. The meter goes by the first sample of the block.
void SpaceEchoLite::FollowLevel(const ProcessBlock& block) {
    float* in = envelopeIn.data();
    float* out = envelopeOut.data();
    ProcessBlock inner = block;
    inner.inputs = &in;
    inner.outputs = &out;
    inner.numInputs = inner.numOutputs = 1;
    envelope.Process(inner);
    SetParameterNormalized(PeakMeter, std::abs(envelopeOut[0]) > kOverload ? 1.0f : 0.0f);
}

void SpaceEchoLite::RunChunk(const ProcessBlock& block, uint32_t from, uint32_t count) {
    TakeInput(block, from, count);
    transport.Play(tape, from, count, !IsPingPong());
    PassHeads(count);
    FillIntensity(count);
    if (IsPingPong())
        RecordPingPong(from, count);
    else
        RecordStereo(from, count);
    Mix(block, from, count);
}

void SpaceEchoLite::TakeInput(const ProcessBlock& block, uint32_t from, uint32_t count) {
    const auto inputs = StereoInputs(block);
    for (uint32_t i = 0; i < count; ++i) {
        const float gain = inputGain[from + i] * inGain;
        input[0][i] = inputs[0][from + i] * gain;
        input[1][i] = inputs[1][from + i] * gain;
    }
    StereoBiquad::ProcessInSeries(highPass, lowPass, Pointers(input), count);
    recorded = input;
    recordShelf.Process(Pointers(recorded), count);
}

/// From the tape to head, which goes back to the tape, and on to wet.
void SpaceEchoLite::PassHeads(uint32_t count) {
    for (uint32_t c = 0; c < kChannels; ++c)
        for (uint32_t i = 0; i < count; ++i)
            head[c][i] = std::tanh(kTapeDrive * tape.played[c][i]);
    playbackShelf.Process(Pointers(head), count);
    headLoss.Process(Pointers(head), {tape.delay[0].data(), tape.delay[1].data()}, count);
    bump.Process(Pointers(head), count);
    for (uint32_t c = 0; c < kChannels; ++c) {
        if (c == 1 && IsPingPong())
            headGap[c].Watch(head[c].data(), count);
        else
            headGap[c].Process(head[c].data(), tape.seconds[c].data(), tape.gap[c].data(), count);
        dcBlock[c].Process(head[c].data(), wet[c].data(), count);
    }
}

void SpaceEchoLite::FillIntensity(uint32_t count) {
    if (intensitySmoother.HasArrived())
        std::fill_n(intensity.begin(), count, static_cast<float>(intensitySmoother.current));
    else
        for (uint32_t i = 0; i < count; ++i)
            intensity[i] = intensitySmoother.Tick();
}

void SpaceEchoLite::RecordStereo(uint32_t from, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        const float gain = intensity[i];
        const float left = head[0][i] * gain, right = head[1][i] * gain;
        transport.Record(0, left + recorded[0][i]);
        transport.Record(1, right + recorded[1][i]);
        envelopeIn[from + i] = std::max(right + input[1][i], left + input[0][i]);
    }
}

/// What has passed the left head goes to the right tape, and from there, unheard by a head, back to
/// the left one.
void SpaceEchoLite::RecordPingPong(uint32_t from, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        const float back = tape.played[1][i] * intensity[i];
        transport.Record(1, head[0][i]);
        transport.Record(0, 0.5f * (recorded[1][i] + recorded[0][i]) + back);
        envelopeIn[from + i] = std::max(0.5f * (input[1][i] + input[0][i]) + back, head[0][i]);
        const float apart = pingPongWidth[from + i];
        const float middle = (1.0f - apart) * (0.5f * (wet[0][i] + wet[1][i]));
        wet[0][i] = middle + apart * wet[0][i];
        wet[1][i] = middle + apart * wet[1][i];
    }
}

void SpaceEchoLite::Mix(const ProcessBlock& block, uint32_t from, uint32_t count) {
    const auto inputs = StereoInputs(block);
    float* const left = block.outputs[0];
    float* const right = block.outputs[1];
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t at = from + i;
        const float wetShare = wetGain[at] * outGain, dryShare = dryGain[at];
        const float inLeft = inputs[0][at], inRight = inputs[1][at];
        left[at] = wetShare * wet[0][i] + dryShare * inLeft;
        right[at] = wetShare * wet[1][i] + dryShare * inRight;
    }
}

}  // namespace Quorvan::dsp
