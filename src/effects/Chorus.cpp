#include "effects/Chorus.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "effects/StereoInputs.h"
#include "framework/ParameterTable.h"
#include "primitives/SmootherLPFPair.h"

namespace Quorvan::dsp {

namespace {

constexpr double kLateSeconds = 0.005;   // of each voice behind the one before
constexpr float kDepthRoom = 1.112f;     // of the lines, over the deepest excursion
constexpr int32_t kSpareSamples = 10;    // of the lines
constexpr float kShortestDelay = 2.0f;   // samples
constexpr float kSpreadDegrees = 90.0f;  // of the right channel ahead of the left
/// The low-pass stays below half the rate, behind which it is unstable. Rates from 41 kHz on never
/// get there.
constexpr float kHighestCorner = 0.49f;

const ParameterTable& Table() {
    using P = ParameterSpec;
    constexpr uint32_t exponential = PotardKind::kExponential;
    static const ParameterTable table = {
        P::Linear("DryWet", 0.0f, 1.0f).AtValue(0.5f),
        P::Linear("Delay", 0.6f, 20.0f).AtValue(5.0f),
        P::Linear("Depth", 0.0f, 10.0f).AtValue(2.2f),
        P::Curved("Freq", exponential, 0.1f, 5.0f, 1.0f).AtValue(0.99f),
        P::Linear("Feedback", 0.0f, 0.9f),
        P::Stepped("FBPolarity", 2),
        P::Stepped("StereoMode", 2),
        P::Stepped("Voices", 3, 1.0f),
        P::Stepped("LFOShape", 2),
        P::Stepped("MidiSync", 2),
        P::Stepped("RateSyncedType", 3),
        P::Stepped("RateSynced", 9),
        P::Linear("LPFfc", 20.0f, 20000.0f),
        P::Linear("HPFfc", 20.0f, 10000.0f),
        P::Stepped("LPFOn", 2),
        P::Stepped("HPFOn", 2),
    };
    return table;
}

enum Row : uint32_t { kDryWetRow = 2, kRateRow, kFeedbackRow };

/// Samples of a time, rounded up: in double precision, in which a whole number stays one.
int32_t SamplesFor(double seconds, float sampleRate) {
    return static_cast<int32_t>(std::ceil(seconds * static_cast<double>(sampleRate)));
}

}  // namespace

Chorus::Chorus(std::string moduleName) : UnitModule(std::move(moduleName), 5, 2, Table()) {
    SetAllNormalized(LFO::GateIn, 1.0f);
    SetAllNormalized(LFO::Stereo, 0.0f);
}

void Chorus::OnSetup(float rateHz, uint32_t blockSize) {
    blockFrames = blockSize;
    sampleRate = rateHz;
    minRate = parameters[Freq].minValue;
    maxRate = parameters[Freq].maxValue;
    SetupVoices();
    lanes.Setup(blockSize);
    SetupSmoothers();
    for (AlignedVector* buffer : {&delay, &depth, &feedback, &voiceWet})
        buffer->assign(blockSize, 0.0f);
    for (Buffers* buffers : {&input, &sum})
        for (AlignedVector& channel : *buffers)
            channel.assign(blockSize, 0.0f);
}

void Chorus::SetupVoices() {
    const float reachMs = parameters[Depth].maxValue * kDepthRoom + parameters[DelayMs].maxValue;
    const int32_t shortest =
        SamplesFor(static_cast<double>(reachMs) * 0.001, sampleRate) + kSpareSamples;
    const int32_t late = SamplesFor(kLateSeconds, sampleRate);
    int32_t offset = 0;
    for (ChorusVoice& voice : voices) {
        voice.Setup(sampleRate, blockFrames, shortest + offset, offset);
        voice.lfo.Configure(LFO::RateUnSynced, PotardKind::kExponential, minRate, maxRate, 1.0f);
        offset += late;
    }
}

void Chorus::SetupSmoothers() {
    mix.Setup(sampleRate, blockFrames);
    const auto setUp = [this](Smoother& smoother, uint32_t stepLength) {
        smoother.stepLength = stepLength;
        smoother.sampleRate = static_cast<double>(sampleRate);
        smoother.UpdateCoefficients();
    };
    for (Smoother* smoother : {&delaySmoother, &depthSmoother, &feedbackSmoother})
        setUp(*smoother, 1);
    for (const auto& [smoother, id] :
         {std::pair{&lowPassSmoother, LPFfc}, {&highPassSmoother, HPFfc}}) {
        smoother->range = static_cast<double>(parameters[id].maxValue - parameters[id].minValue);
        setUp(*smoother, blockFrames);
    }
}

void Chorus::OnReset(bool hard) {
    for (ChorusVoice& voice : voices)
        voice.Reset(hard);
    mix.Reset(Value(DryWet));
    delaySmoother.Reset(DelayTarget());
    depthSmoother.Reset(std::clamp(DepthTarget(), 0.0f, DelayTarget() - kShortestDelay));
    lowPassHz = Value(LPFfc);
    highPassHz = Value(HPFfc);
    lowPassSmoother.Reset(lowPassHz);
    highPassSmoother.Reset(highPassHz);
    ComputeLowPass();
    ComputeHighPass();
    feedbackSmoother.Reset(FeedbackSign() * Value(Feedback));
}

bool Chorus::UpdateParameters(ProcessBlock&) {
    UpdateDelay();
    UpdateVoices();
    if (IsChanged(DryWet))
        mix.SetTarget(Value(DryWet));
    UpdateSwitches();
    UpdateSync();
    UpdateFilters();
    return true;
}

bool Chorus::OnProcess(ProcessBlock& block) {
    FillMix(block);
    FillGlides(block);
    TakeInput(block);
    RunVoices(block);
    const uint32_t count = block.numFrames;
    std::copy_n(sum[0].data(), count, block.outputs[0]);
    if (block.numOutputs > 1 && block.outputs[1] != nullptr)
        std::copy_n(sum[channelCount - 1].data(), count, block.outputs[1]);
    return true;
}

template <class Visit>
void Chorus::ForEachActive(Visit&& visit) {
    for (uint32_t v = 0; v < voiceCount; ++v)
        visit(voices[v].lfo, v);
}

void Chorus::SetAll(uint32_t lfoId, float value) {
    for (ChorusVoice& voice : voices)
        voice.lfo.SetParameterValue(lfoId, value);
}

void Chorus::SetAllNormalized(uint32_t lfoId, float position) {
    for (ChorusVoice& voice : voices)
        voice.lfo.SetParameterNormalized(lfoId, position);
}

float Chorus::DelayTarget() {
    return std::max(sampleRate * 0.001f * Value(DelayMs), kShortestDelay);
}

/// As the parameter has it, before it is held to the delay.
float Chorus::DepthTarget() { return sampleRate * 0.001f * Value(Depth); }

float Chorus::FeedbackSign() { return Position(FBPolarity) >= 0.5f ? -1.0f : 1.0f; }

void Chorus::UpdateDelay() {
    if (!IsChanged(DelayMs) && !IsChanged(Depth))
        return;
    const float middle = DelayTarget();
    const float wanted = DepthTarget();
    const float held = std::clamp(wanted, 0.0f, middle - kShortestDelay);
    if (IsChanged(Depth) || wanted != held)
        depthSmoother.SetTarget(held);
    if (IsChanged(DelayMs))
        delaySmoother.SetTarget(middle);
}

void Chorus::UpdateVoices() {
    if (IsChanged(Freq))
        rate = Value(Freq);
    if (IsChanged(Voices)) {
        const float count = std::clamp(Value(Voices), 1.0f, static_cast<float>(kMaxVoices));
        voiceGain = 1.0f / count;
        voiceCount = static_cast<uint32_t>(count);
        wetVoiceGain = std::sqrt(voiceGain);
        ForEachActive([](LFO& lfo, uint32_t) { lfo.Reset(false); });
    }
    if (!IsChanged(DelayMs) && !IsChanged(Depth) && !IsChanged(Freq) && !IsChanged(Voices))
        return;
    ForEachActive([this](LFO& lfo, uint32_t v) {
        lfo.SetParameterValue(LFO::RateUnSynced, std::clamp(rate, minRate, maxRate));
        lfo.SetParameterValue(LFO::PhaseInit, static_cast<float>(v) * voiceGain * 360.0f);
        lfo.SetParameterValue(LFO::StereoSpread, kSpreadDegrees);
        lfo.SetParameterValue(LFO::Waveform, static_cast<float>(lfoWaveform));
    });
}

void Chorus::UpdateSwitches() {
    if (IsChanged(FBPolarity))
        feedbackSign = FeedbackSign();
    if (IsChanged(StereoMode)) {
        SetAllNormalized(LFO::Stereo, Position(StereoMode));
        channelCount = Position(StereoMode) > 0.5f ? 2 : 1;
    }
    if (IsChanged(LFOShape)) {
        const int32_t shape = Index(LFOShape);
        if (shape == 0 || shape == 1)
            lfoWaveform = shape;
        SetAll(LFO::Waveform, static_cast<float>(lfoWaveform));
    }
}

void Chorus::UpdateSync() {
    if (IsChanged(MidiSync))
        SetAllNormalized(LFO::MidiSync, Position(MidiSync));
    if (IsChanged(RateSyncedType))
        SetAllNormalized(LFO::RateSyncedType, Position(RateSyncedType));
    if (IsChanged(RateSynced))
        SetAll(LFO::RateSynced, Value(RateSynced));
}

void Chorus::UpdateFilters() {
    if (IsChanged(LPFOn))
        lowPassOn = Position(LPFOn) > 0.5f;
    if (IsChanged(HPFOn))
        highPassOn = Position(HPFOn) > 0.5f;
    if (IsChanged(LPFfc))
        lowPassSmoother.SetTarget(Value(LPFfc));
    if (IsChanged(HPFfc))
        highPassSmoother.SetTarget(Value(HPFfc));
    // A filter that is off keeps its corner, and glides on from there.
    const float lowBefore = lowPassHz, highBefore = highPassHz;
    if (lowPassOn)
        lowPassHz = lowPassSmoother.Tick();
    if (highPassOn)
        highPassHz = highPassSmoother.Tick();
    if (lowPassHz != lowBefore)
        ComputeLowPass();
    if (highPassHz != highBefore)
        ComputeHighPass();
}

void Chorus::ComputeLowPass() {
    lowPass = OnePole::LowPass(std::min(lowPassHz, kHighestCorner * sampleRate), sampleRate);
}

void Chorus::ComputeHighPass() { highPass = OnePole::HighPass(highPassHz, sampleRate); }

void Chorus::FillMix(ProcessBlock& block) {
    mix.SetTarget(parameters[DryWet].GetBlockValue(block, kDryWetRow));
    mix.Fill(block.numFrames);
    const float* const wetGain = mix.WetGain();
    for (uint32_t i = 0; i < block.numFrames; ++i)
        voiceWet[i] = wetGain[i] * wetVoiceGain;
}

void Chorus::FillGlides(ProcessBlock& block) {
    const uint32_t count = block.numFrames;
    feedbackSmoother.SetTarget(feedbackSign *
                               parameters[Feedback].GetBlockValue(block, kFeedbackRow));
    feedbackSmoother.FillBlock(feedback.data(), count);
    SmootherLPFPair::FillBlocks(delaySmoother, delay.data(), depthSmoother, depth.data(), count);
    // The two glide apart from each other: what would reach past the write position is held.
    for (uint32_t i = 0; i < count; ++i)
        depth[i] = delay[i] <= depth[i] ? delay[i] - 1.0f : depth[i];
}

void Chorus::TakeInput(const ProcessBlock& block) {
    const auto inputs = StereoInputs(block);
    const uint32_t count = block.numFrames;
    if (channelCount == 1) {
        for (uint32_t i = 0; i < count; ++i)
            input[0][i] = 0.5f * (inputs[0][i] + inputs[1][i]);
        return;
    }
    for (uint32_t c = 0; c < kChannels; ++c)
        std::copy_n(inputs[c], count, input[c].data());
}

void Chorus::RunVoices(const ProcessBlock& block) {
    const uint32_t count = block.numFrames;
    const float* const dryGain = mix.DryGain();
    // All voices together hold the dry signal once.
    for (uint32_t c = 0; c < channelCount; ++c)
        for (uint32_t i = 0; i < count; ++i)
            sum[c][i] = input[c][i] * dryGain[i];
    const ChorusVoice::Course course{.count = count,
                                     .channels = channelCount,
                                     .in = {input[0].data(), input[1].data()},
                                     .out = {sum[0].data(), sum[1].data()},
                                     .delay = delay.data(),
                                     .depth = depth.data(),
                                     .feedback = feedback.data(),
                                     .gain = voiceWet.data(),
                                     .lowPass = lowPassOn ? &lowPass : nullptr,
                                     .highPass = highPassOn ? &highPass : nullptr};
    float* const rateRow = IsRowActive(block, kRateRow) ? block.inputs[kRateRow] : nullptr;
    lanes.Clear();
    std::array<bool, kMaxVoices> inLanes{};
    for (uint32_t v = 0; v < voiceCount; ++v) {
        voices[v].RunLfo(block, rateRow);
        inLanes[v] = voices[v].Plan(course);
        if (inLanes[v])
            voices[v].Gather(course, lanes, kChannels * v);
    }
    lanes.Run(kChannels * voiceCount, count, course.lowPass, course.highPass);
    for (uint32_t v = 0; v < voiceCount; ++v) {
        if (inLanes[v])
            voices[v].Give(course, lanes, kChannels * v);
        else
            voices[v].Run(course);
    }
}

}  // namespace Quorvan::dsp
