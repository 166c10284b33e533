#include "effects/Compressor.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "framework/ParameterTable.h"
#include "primitives/BlockDelay.h"
#include "primitives/Decibels.h"

namespace Quorvan::dsp {

namespace {

constexpr float kLongestLookahead = 0.010000001f;  // seconds
constexpr float kNepersPerDecibel = 0.115129255f;  // ln(10) / 20
/// So near to 0 dB, in dB, the linear gain rounds to 1.
constexpr float kUnityBound = 2.5e-7f;

const ParameterTable& Table() {
    using P = ParameterSpec;
    constexpr uint32_t exponential = PotardKind::kExponential;
    static const ParameterTable table = {
        P::Raw("Wet"),
        P::Linear("InGainCompensated", -36.0f, 36.0f).AtValue(0.0f),
        P::Linear("InputGain", -18.0f, 18.0f).AtValue(0.0f),
        P::Linear("OutputGain", -36.0f, 36.0f),
        P::Curved("Attack", exponential, 0.01f, 1000.0f, 10.0f),
        P::Curved("Release", exponential, 1.0f, 2000.0f, 3.0f),
        P::Linear("Threshold", -80.0f, 0.0f),
        P::Curved("Ratio", exponential, 1.0f, 100.0f, 9.0f),
        P::Stepped("RatioInfinite", 2),
        P::Linear("KneeWidth", 0.0f, 20.0f),
        P::Stepped("Makeup", 2),
        P::Stepped("StereoMode", 2),
        P::Raw("OutGainReduction"),
        P::Stepped("LevelMeasureSmoothAR", 2),
        P::Linear("LevelMeasureAtMs", 0.01f, 1000.0f).AtValue(0.1f),
        P::Linear("LevelMeasureReMs", 0.01f, 1000.0f).AtValue(1.0f),
        P::Stepped("LookaheadEnable", 2),
        P::Curved("LookaheadTimeMs", exponential, 0.01f, 10.0f, 3.0f),
    };
    return table;
}

enum Row : uint32_t { kWetRow = 2, kReleaseRow, kThresholdRow, kRatioRow };

}  // namespace

Compressor::Compressor(std::string moduleName) : UnitModule(std::move(moduleName), 6, 2, Table()) {}

void Compressor::OnSetup(float rate, uint32_t blockSize) {
    sampleRate = rate;
    for (AlignedVector* buffer : {&wetBuffer, &gainBuffer, &drivenSignal, &delayedSignal})
        buffer->assign(blockSize, 0.0f);

    wetSmoother.stepLength = 1;
    wetSmoother.sampleRate = rate;
    wetSmoother.UpdateCoefficients();
    wetSmoother.rampSteps = blockSize;
    for (SmootherLPF* smoother :
         {&inGainSmoother, &outGainSmoother, &ratioSmoother, &thresholdSmoother}) {
        smoother->sampleRate = rate;
        smoother->stepLength = blockSize;
        smoother->UpdateCoefficients();
    }

    const int32_t capacity = 1 + static_cast<int32_t>(rate * kLongestLookahead);
    for (uint32_t c = 0; c < kChannels; ++c) {
        inputRings[c].Resize(capacity);
        gainRings[c].Resize(capacity);
    }
}

void Compressor::OnReset(bool) {
    detectorLevel.fill(0.0f);
    gainReduction.fill(0.0f);
    inGainSmoother.Reset(InputGainTarget());
    outGainSmoother.Reset(OutputGainTarget());
    ratioSmoother.Reset(Value(Ratio));
    thresholdSmoother.Reset(Value(Threshold));
    wetSmoother.Reset(Value(Wet));
    SetParameterNormalized(OutGainReduction, 0.0f);
    ClearRings();
}

bool Compressor::UpdateParameters(ProcessBlock&) {
    if (IsChanged(Attack))
        attackCoefficient = PerSample(Value(Attack));
    if (IsChanged(StereoMode)) {
        stereoLinked = IsOn(StereoMode);
        detectorCount = stereoLinked ? 1 : 2;
    }
    if (IsChanged(KneeWidth))
        kneeWidth = Value(KneeWidth);
    if (IsChanged(RatioInfinite))
        ratioInfinite = IsOn(RatioInfinite);
    if (IsChanged(Makeup))
        makeupOn = IsOn(Makeup);
    if (IsChanged(LookaheadEnable) || IsChanged(LookaheadTimeMs))
        UpdateLookahead();
    UpdateGains();
    if (IsChanged(LevelMeasureAtMs))
        levelAttackCoefficient = PerSample(Value(LevelMeasureAtMs));
    if (IsChanged(LevelMeasureReMs))
        levelReleaseCoefficient = PerSample(Value(LevelMeasureReMs));
    if (IsChanged(LevelMeasureSmoothAR))
        levelSmoothOn = Position(LevelMeasureSmoothAR) > 0.5f;
    return true;
}

bool Compressor::OnProcess(ProcessBlock& block) {
    ReadBlockTargets(block);
    UpdateCurve();

    const uint32_t count = block.numFrames;
    const float* left = block.inputs[0];
    const float* right = block.numInputs > 1 ? block.inputs[1] : nullptr;
    const uint32_t passes = right == nullptr ? 1 : detectorCount;
    for (uint32_t pass = 0; pass < passes; ++pass) {
        const float* own = pass == 0 ? left : right;
        const bool both = stereoLinked && right != nullptr;
        FillDetectorInput(own, both ? right : own, count);
        if (levelSmoothOn)
            FollowLevel(pass, count);
        else if (count > 0)
            detectorLevel[pass] = gainBuffer[count - 1];
        FillGains(pass, count);
        if (lookaheadSamples != 0)
            gainRings[pass].Process(gainBuffer.data(), count);
        WriteChannel(pass, own, block.outputs[pass], count);
    }
    if (stereoLinked)
        WriteChannel(1, right, right == nullptr ? nullptr : block.outputs[1], count);
    SetParameterValue(OutGainReduction, MeterValue(passes));
    return true;
}

/// Step of a one-pole with this time constant; a time of 0 gives 1, so that it jumps.
float Compressor::PerSample(float timeMs) const {
    return 1.0f - std::exp(-1.0f / (timeMs * 0.001f * sampleRate));
}

float Compressor::InputGainTarget() {
    return DecibelsToGain(Value(InputGain) + Value(InGainCompensated));
}

float Compressor::OutputGainTarget() {
    return DecibelsToGain(Value(OutputGain) - Value(InGainCompensated));
}

void Compressor::UpdateLookahead() {
    lookaheadSamples = 0;
    if (Position(LookaheadEnable) <= 0.5f)
        return;
    if (IsChanged(LookaheadEnable) && !needsFullUpdate)
        ClearRings();
    const auto wanted = static_cast<int32_t>(Value(LookaheadTimeMs) * sampleRate * 0.001f);
    lookaheadSamples = std::clamp(wanted, 0, inputRings[0].size - 1);
    for (LookaheadGain& ring : gainRings)
        ring.SetLength(lookaheadSamples);
}

void Compressor::ClearRings() {
    for (uint32_t c = 0; c < kChannels; ++c) {
        inputRings[c].Clear();
        gainRings[c].Clear();
    }
}

void Compressor::UpdateGains() {
    if (IsChanged(InputGain))
        inGainSmoother.SetTarget(InputGainTarget());
    if (IsChanged(OutputGain))
        outGainSmoother.SetTarget(OutputGainTarget());
    inGainLinear = inGainSmoother.Tick();
    outGainLinear = outGainSmoother.Tick();
}

void Compressor::ReadBlockTargets(const ProcessBlock& block) {
    wetSmoother.SetTarget(parameters[Wet].GetBlockValue(block, kWetRow));
    thresholdSmoother.SetTarget(parameters[Threshold].GetBlockValue(block, kThresholdRow));
    ratioSmoother.SetTarget(parameters[Ratio].GetBlockValue(block, kRatioRow));
    releaseCoefficient = PerSample(parameters[Release].GetBlockValue(block, kReleaseRow));
    wetSmoother.FillBlock(wetBuffer.data(), block.numFrames);
}

void Compressor::UpdateCurve() {
    const float ratio = ratioSmoother.Tick();
    const float slope = ratioInfinite ? 0.0f : 1.0f / ratio;
    curve = CompressionCurve(thresholdSmoother.Tick(), slope, kneeWidth);
    makeupGain = makeupOn ? curve.MakeupGain() : 1.0f;
}

/// The louder of two channels behind the input gain.
void Compressor::FillDetectorInput(const float* a, const float* b, uint32_t count) {
    float* const out = gainBuffer.data();
    const float gain = inGainLinear;
    for (uint32_t i = 0; i < count; ++i)
        out[i] = std::max(std::abs(gain * a[i]), std::abs(gain * b[i]));
}

void Compressor::FollowLevel(uint32_t pass, uint32_t count) {
    float* const levels = gainBuffer.data();
    const float rise = levelAttackCoefficient;
    const float fall = levelReleaseCoefficient;
    float level = detectorLevel[pass];
    for (uint32_t i = 0; i < count; ++i) {
        const float x = levels[i];
        if (x > level)
            level += (x - level) * rise;
        else if (x < level)
            level += (x - level) * fall;
        levels[i] = level;
    }
    detectorLevel[pass] = level;
}

/// Turns levels into linear gains ahead of the look-ahead. The power of ten is an exponential of
/// the decibels, which differs in the last digit only.
void Compressor::FillGains(uint32_t pass, uint32_t count) {
    float* const gains = gainBuffer.data();
    const CompressionCurve law = curve;
    const float attack = attackCoefficient;
    const float release = releaseCoefficient;
    float smoothed = gainReduction[pass];
    if (smoothed == 0.0f && law.LeavesAll(gains, count)) {
        std::fill_n(gains, count, 1.0f);
        return;
    }
    for (uint32_t i = 0; i < count; ++i) {
        const float wanted = law.GainDb(gains[i]);
        const float coefficient = std::abs(wanted) > std::abs(smoothed) ? attack : release;
        smoothed += (wanted - smoothed) * coefficient;
        gains[i] = std::abs(smoothed) < kUnityBound ? 1.0f : std::exp(smoothed * kNepersPerDecibel);
    }
    gainReduction[pass] = smoothed;
}

/// Mixes one channel from gainBuffer. An absent input still runs its delay, with silence.
void Compressor::WriteChannel(uint32_t channel, const float* in, float* out, uint32_t count) {
    float* const driven = drivenSignal.data();
    const float inGain = inGainLinear;
    if (in == nullptr)
        std::fill_n(driven, count, 0.0f);
    else
        for (uint32_t i = 0; i < count; ++i)
            driven[i] = inGain * in[i];
    const float* signal = driven;
    if (lookaheadSamples != 0) {
        RunBlockDelay(inputRings[channel], static_cast<uint32_t>(lookaheadSamples), driven,
                      delayedSignal.data(), count);
        signal = delayedSignal.data();
    }
    if (out == nullptr)
        return;
    const float* const gains = gainBuffer.data();
    const float* const wet = wetBuffer.data();
    const float outGain = outGainLinear;
    const float makeup = makeupGain;
    for (uint32_t i = 0; i < count; ++i)
        out[i] = (1.0f - wet[i]) * in[i] + gains[i] * outGain * makeup * signal[i] * wet[i];
}

/// The largest reduction of the passes run on the scale of the display.
float Compressor::MeterValue(uint32_t passes) const {
    float m = 0.0f;
    for (uint32_t pass = 0; pass < passes; ++pass)
        m = std::max(m, -gainReduction[pass]);
    return std::clamp(((m * 3.465e-06f - 0.000511f) * m + 0.03486f) * m, 0.0f, 1.0f);
}

}  // namespace Quorvan::dsp
