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

/// In place. The power of ten is an exponential of the decibels, which differs in the last digit
/// only.
void DecibelsToGains(float* values, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i)
        values[i] =
            std::abs(values[i]) < kUnityBound ? 1.0f : std::exp(values[i] * kNepersPerDecibel);
}

enum Row : uint32_t { kWetRow = 2, kReleaseRow, kThresholdRow, kRatioRow };

}  // namespace

Compressor::Compressor(std::string moduleName) : UnitModule(std::move(moduleName), 6, 2, Table()) {}

void Compressor::OnSetup(float rate, uint32_t blockSize) {
    sampleRate = rate;
    for (AlignedVector* buffer :
         {&wetBuffer, &gainBuffers[0], &gainBuffers[1], &drivenSignal, &delayedSignal})
        buffer->assign(blockSize, 0.0f);
    heldWet.Forget();
    releaseTime = -1.0f;

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
    const std::array<const float*, kChannels> own{left, right};
    for (uint32_t pass = 0; pass < passes; ++pass) {
        const bool both = stereoLinked && right != nullptr;
        FillDetectorInput(pass, own[pass], both ? right : own[pass], count);
        if (levelSmoothOn)
            FollowLevel(pass, count);
        else if (count > 0)
            detectorLevel[pass] = gainBuffers[pass][count - 1];
    }
    FillGains(passes, count);
    DelayGains(passes, count);
    for (uint32_t pass = 0; pass < passes; ++pass)
        WriteChannel(pass, pass, own[pass], block.outputs[pass], count);
    if (stereoLinked)
        WriteChannel(1, 0, right, right == nullptr ? nullptr : block.outputs[1], count);
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
    const float time = parameters[Release].GetBlockValue(block, kReleaseRow);
    if (time != releaseTime)
        releaseCoefficient = PerSample(time);
    releaseTime = time;
    FillWet(block.numFrames);
}

void Compressor::FillWet(uint32_t count) {
    allWet = wetSmoother.IsAtRestAt(1.0);
    if (allWet) {
        heldWet.Fill(wetBuffer.data(), count, 1.0f);
        return;
    }
    heldWet.Forget();
    wetSmoother.FillBlock(wetBuffer.data(), count);
}

void Compressor::UpdateCurve() {
    const float ratio = ratioSmoother.Tick();
    const float slope = ratioInfinite ? 0.0f : 1.0f / ratio;
    const float threshold = thresholdSmoother.Tick();
    if (!curve.Is(threshold, slope, kneeWidth))
        curve = CompressionCurve(threshold, slope, kneeWidth);
    makeupGain = makeupOn ? curve.MakeupGain() : 1.0f;
}

/// The louder of two channels behind the input gain.
void Compressor::FillDetectorInput(uint32_t pass, const float* a, const float* b, uint32_t count) {
    float* const out = gainBuffers[pass].data();
    const float gain = inGainLinear;
    for (uint32_t i = 0; i < count; ++i)
        out[i] = std::max(std::abs(gain * a[i]), std::abs(gain * b[i]));
}

/// Which way a level goes is anybody's guess: both are worked out, and no jump depends on it.
void Compressor::FollowLevel(uint32_t pass, uint32_t count) {
    float* const levels = gainBuffers[pass].data();
    const float rise = levelAttackCoefficient;
    const float fall = levelReleaseCoefficient;
    float level = detectorLevel[pass];
    for (uint32_t i = 0; i < count; ++i) {
        const float x = levels[i];
        const float risen = level + (x - level) * rise;
        const float fallen = level + (x - level) * fall;
        level = x > level ? risen : x < level ? fallen : level;
        levels[i] = level;
    }
    detectorLevel[pass] = level;
}

/// Whether the gain stays at 1 over the block.
bool Compressor::IsIdle(uint32_t pass, uint32_t count) const {
    return gainReduction[pass] == 0.0f && curve.LeavesAll(gainBuffers[pass].data(), count);
}

/// Turns levels into linear gains ahead of the look-ahead.
void Compressor::FillGains(uint32_t passes, uint32_t count) {
    std::array<uint32_t, kChannels> busy{};
    uint32_t busyCount = 0;
    for (uint32_t pass = 0; pass < passes; ++pass) {
        unity[pass] = IsIdle(pass, count);
        if (unity[pass])
            std::fill_n(gainBuffers[pass].begin(), count, 1.0f);
        else
            busy[busyCount++] = pass;
    }
    for (uint32_t k = 0; k < busyCount; ++k)
        curve.LevelsToGainsDb(gainBuffers[busy[k]].data(), count);
    if (busyCount > 0)
        FollowGains(busy[0], busy[busyCount - 1], count);
    for (uint32_t k = 0; k < busyCount; ++k)
        DecibelsToGains(gainBuffers[busy[k]].data(), count);
}

void Compressor::DelayGains(uint32_t passes, uint32_t count) {
    for (uint32_t pass = 0; lookaheadSamples != 0 && pass < passes; ++pass) {
        float* const gains = gainBuffers[pass].data();
        if (unity[pass])
            unity[pass] = gainRings[pass].ProcessUnity(gains, count);
        else
            gainRings[pass].Process(gains, count);
    }
}

/// Attack and release of the gains in dB. Two passes go side by side in a vector, which also keeps
/// jumps out that would depend on the signal; a pass alone stands in both places.
void Compressor::FollowGains(uint32_t a, uint32_t b, uint32_t count) {
    using Lanes = float __attribute__((vector_size(16)));
    float* const gainsA = gainBuffers[a].data();
    float* const gainsB = gainBuffers[b].data();
    const Lanes attack = Lanes{} + attackCoefficient, release = Lanes{} + releaseCoefficient;
    const auto size = [](Lanes x) { return x > -x ? x : -x; };
    Lanes smoothed{gainReduction[a], gainReduction[b]};
    for (uint32_t i = 0; i < count; ++i) {
        const Lanes wanted{gainsA[i], gainsB[i]};
        const Lanes way = wanted - smoothed;
        const Lanes attacked = smoothed + way * attack, released = smoothed + way * release;
        smoothed = size(wanted) > size(smoothed) ? attacked : released;
        gainsA[i] = smoothed[0];
        gainsB[i] = smoothed[1];
    }
    gainReduction[a] = smoothed[0];
    gainReduction[b] = smoothed[1];
}

/// Whether nothing is done to the signal but that it is late.
bool Compressor::IsPlain(uint32_t pass) const {
    return unity[pass] && allWet && lookaheadSamples != 0 && inGainLinear == 1.0f &&
           outGainLinear == 1.0f && makeupGain == 1.0f;
}

/// What WriteChannel comes to then. The dry share is 0 of the input, which can take the sign off a
/// zero.
void Compressor::WritePlain(uint32_t channel, const float* in, float* out, uint32_t count) {
    float* const delayed = delayedSignal.data();
    RunBlockDelay(inputRings[channel], static_cast<uint32_t>(lookaheadSamples), in, delayed, count);
    for (uint32_t i = 0; i < count; ++i)
        out[i] = 0.0f * in[i] + delayed[i];
}

/// Mixes one channel with the gains of a pass. An absent input still runs its delay, with silence.
void Compressor::WriteChannel(uint32_t channel, uint32_t pass, const float* in, float* out,
                              uint32_t count) {
    if (in != nullptr && out != nullptr && IsPlain(pass))
        return WritePlain(channel, in, out, count);
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
    const float* const gains = gainBuffers[pass].data();
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
