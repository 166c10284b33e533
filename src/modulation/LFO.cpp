#include "modulation/LFO.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "framework/ParameterTable.h"
#include "primitives/Clock.h"
#include "primitives/FastMath.h"
#include "primitives/PolynomialSine.h"
#include "primitives/Xorshift.h"

namespace Quorvan::dsp {

namespace {

constexpr uint32_t kAmpRow = 1;
constexpr uint32_t kPhaseRow = 2;
constexpr float kInverse360 = 0.0027777778f;
/// The fade rises as e^(10 y): ten times the binary logarithm of e, and e^10 - 1.
constexpr float kFadeOctaves = 14.42695f;
constexpr float kFadeNorm = 22025.5f;
constexpr double kShortestTime = 1e-12;

const ParameterTable& Table() {
    using P = ParameterSpec;
    static const ParameterTable table{
        P::Stepped("Waveform", 6),
        P::Raw("Amp").AtPosition(1.0f),
        P::Raw("Smooth"),
        P::Stepped("SmoothRateLinked", 2),
        P::Raw("Fade"),
        P::Raw("Stereo"),
        P::Linear("StereoSpread", 0.0f, 360.0f),
        P::Stepped("SnHStereoMode", 2),
        P::Raw("Unipolar"),
        P::Raw("CurrentPhaseFeedback"),
        P::Linear("CurrentValueLFeedback", -1.0f, 1.0f),
    };
    return table;
}

/// Phases are never negative.
float FractionOf(float phase) { return phase - static_cast<float>(static_cast<int32_t>(phase)); }

float Triangle(float p) {
    if (p < 0.25f)
        return 4.0f * p;
    return p < 0.75f ? 2.0f - 4.0f * p : 4.0f * p - 4.0f;
}

template <class Wave>
void FillFrom(const float* phases, float* out, uint32_t steps, float spread, float offset,
              Wave&& wave) {
    for (uint32_t i = 0; i < steps; ++i)
        out[i] = wave(FractionOf(phases[i] + spread + offset));
}

}  // namespace

LFO::LFO(std::string moduleName)
    : IGenerator(std::move(moduleName), 3, 2, Table()), randomState(prims::SeedFromClock()) {
    rateInputMode = kPerBlock;
    rateInputIndex = 0;
    SetParameterValue(Mode, static_cast<float>(kFree));
}

void LFO::OnSetup(float rateHz, uint32_t blockSize) {
    IGenerator::OnSetup(rateHz, blockSize);
    lfoSampleRate = rateHz;
    const uint32_t stepLength = Position(ControlRate) > 0.5f ? blockSize : 1;
    samplesPerStep = static_cast<float>(stepLength);
    for (SmootherLPF& smoother : smoothers) {
        smoother.stepLength = stepLength;
        smoother.sampleRate = static_cast<double>(rateHz);
        smoother.UpdateCoefficients();
    }
}

void LFO::OnReset(bool) {
    wasPlaying = false;
    Restart();
    for (SmootherLPF& smoother : smoothers)
        smoother.Reset(0.0f);
    DrawHeld();
    rightSwitched = false;
}

void LFO::Restart() {
    IGenerator::Restart();
    DrawHeld();
    fadePosition = Value(Fade) > 0.0f ? 0.0f : 1.0f;
}

float LFO::Draw() { return 2.0f * prims::XorshiftUniform(randomState) - 1.0f; }

void LFO::DrawHeld() { held.fill(Draw()); }

bool LFO::UpdateParameters(ProcessBlock& block) {
    IGenerator::UpdateParameters(block);
    if (IsChanged(Stereo))
        channelCount = Value(Stereo) <= 0.5f ? 1 : 2;
    if (IsChanged(Waveform))
        waveform = static_cast<uint32_t>(Index(Waveform));
    if (IsChanged(SnHStereoMode))
        snhStereoMode = static_cast<uint32_t>(Index(SnHStereoMode));
    if (IsChanged(Smooth) || IsChanged(SmoothRateLinked)) {
        smoothRateLinked = Position(SmoothRateLinked) > 0.5f;
        if (!smoothRateLinked)
            SetSmoothingTime(Value(Smooth));
    }
    if (IsChanged(Fade)) {
        const float seconds = Value(Fade);
        if (seconds > 0.0f)
            fadeIncrement = samplesPerStep / (seconds * lfoSampleRate);
        else
            fadePosition = 1.0f;
    }
    if (IsChanged(Unipolar))
        unipolar = Position(Unipolar) > 0.5f;
    return true;
}

/// Called every block while the time is linked to the rate: an unchanged time costs nothing.
void LFO::SetSmoothingTime(float seconds) {
    smoothOn = seconds > 0.0f;
    // In this order a time that is not a number, 0 cycles of a rate of 0, becomes the shortest.
    const double time = std::max(kShortestTime, static_cast<double>(seconds));
    if (time == smoothers[0].time)
        return;
    for (SmootherLPF& smoother : smoothers) {
        smoother.time = time;
        smoother.UpdateCoefficients();
    }
}

/// How far input 2 moves the start phase, in cycles; never negative.
float LFO::PhaseOffset(const ProcessBlock& block) {
    if (!IsRowActive(block, kPhaseRow))
        return 0.0f;
    const float moved = parameters[PhaseInit].GetBlockValue(block, kPhaseRow);
    return (moved - Value(PhaseInit)) * kInverse360 + 1.0f;
}

bool LFO::Generate(ProcessBlock& block) {
    const float amplitude = parameters[Amp].GetBlockNormalized(block, kAmpRow);
    if (smoothRateLinked)
        SetSmoothingTime(Value(Smooth) / RateInHertz(rateBuffer[0]));
    const float offset = PhaseOffset(block);
    const uint32_t channels = std::min(channelCount, block.numOutputs);
    for (uint32_t c = channels; c < block.numOutputs; ++c)
        std::fill_n(block.outputs[c], block.numFrames, 0.0f);
    // What goes on from step to step has to go through all of them.
    const bool isOfPhase = waveform != kSampleAndHold && !smoothOn;
    const uint32_t steps = isOfPhase && onlyFirstStep ? 1 : block.numFrames;
    for (uint32_t c = 0; c < channels; ++c) {
        float* const out = block.outputs[c];
        const float spread = c == 0 ? 0.0f : Value(StereoSpread) * kInverse360;
        if (waveform != kSampleAndHold)
            FillShape(out, steps, spread, offset);
        else if (c == 0)
            FillHeldLeft(out, steps);
        else
            FillHeldRight(out, steps, spread);
        Scale(out, steps, amplitude);
        if (smoothOn) {
            SmootherLPF& smoother = smoothers[c];
            for (uint32_t i = 0; i < steps; ++i) {
                smoother.SetTarget(out[i]);
                out[i] = smoother.Tick();
            }
        }
        if (fadePosition < 1.0f)
            ApplyFade(out, steps);
    }
    if (fadePosition < 1.0f)
        fadePosition += static_cast<float>(block.numFrames) * fadeIncrement;
    SetParameterValue(CurrentPhaseFeedback, FractionOf(offset + phaseBuffer[0]));
    if (channels > 0)
        SetParameterValue(CurrentValueLFeedback, block.outputs[0][0]);
    return true;
}

void LFO::FillShape(float* out, uint32_t steps, float spread, float offset) const {
    const auto fill = [&](auto wave) { FillFrom(phaseBuffer, out, steps, spread, offset, wave); };
    switch (waveform) {
        case kSine:
            return fill([](float p) { return PolynomialSineOfTurn(p); });
        case kTriangle:
            return fill(Triangle);
        case kFallingSaw:
            return fill([](float p) { return 1.0f - 2.0f * p; });
        case kRisingSaw:
            return fill([](float p) { return 2.0f * p - 1.0f; });
        default:
            return fill([](float p) { return p < 0.5f ? 1.0f : -1.0f; });
    }
}

void LFO::FillHeldLeft(float* out, uint32_t steps) {
    for (uint32_t i = 0; i < steps; ++i) {
        previousHeld = held[0];
        if (tickBuffer[i] > 0.5f) {
            held[0] = Draw();
            if (snhStereoMode == kInverted)
                held[1] = -held[0];
            rightSwitched = false;
        }
        out[i] = held[0];
    }
}

/// Sees the left channel as the whole block has left it.
void LFO::FillHeldRight(float* out, uint32_t steps, float spread) {
    if (snhStereoMode != kSpread) {
        std::fill_n(out, steps, held[1]);
        return;
    }
    const float late = 2.0f * spread;
    const float switchPhase = std::clamp(1.0f - late, 0.0f, 1.0f);
    for (uint32_t i = 0; i < steps; ++i) {
        const float phase = phaseBuffer[i];
        const float step = std::fmod(phase + 1.0f - lastPhase, 1.0f);
        if (step < late && late < 1.0f) {
            if (switchPhase + phase >= 1.0f && !rightSwitched) {
                held[1] = previousHeld;
                rightSwitched = true;
            }
        } else if (tickBuffer[i] > 0.5f) {
            held[1] = late >= 1.0f ? previousHeld : held[0];
            rightSwitched = false;
        }
        lastPhase = phase;
        out[i] = held[1];
    }
}

void LFO::Scale(float* out, uint32_t steps, float amplitude) const {
    if (unipolar) {
        for (uint32_t i = 0; i < steps; ++i)
            out[i] = (out[i] + 1.0f) * 0.5f * amplitude;
        return;
    }
    for (uint32_t i = 0; i < steps; ++i)
        out[i] *= amplitude;
}

/// Stays near 0 and rises steeply at the end.
void LFO::ApplyFade(float* out, uint32_t steps) const {
    for (uint32_t i = 0; i < steps; ++i) {
        const float position = std::min(fadePosition + static_cast<float>(i) * fadeIncrement, 1.0f);
        out[i] *= (FastPow2(kFadeOctaves * position) - 1.0f) / kFadeNorm;
    }
}

}  // namespace Quorvan::dsp
