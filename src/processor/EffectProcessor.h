#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

#include "framework/ParameterTable.h"
#include "primitives/AlignedVector.h"
#include "primitives/Decibels.h"
#include "primitives/SmootherLPF.h"
#include "primitives/SmootherSRL.h"
#include "processor/FXConstructionHelper.h"
#include "processor/IProcessor.h"

namespace Quorvan::Processor {

/// Data of a binary parameter.
struct BlobData {
    uint64_t size = 0;  ///< bytes
    const void* data = nullptr;
};

/// Channels of a block.
enum ChannelMode : uint32_t { kMonoOut = 0, kStereo = 1, kMonoIn = 2 };

/// State of the bypass.
enum BypassState : uint32_t { kEffectRuns = 0, kCrossfading = 1, kBypassed = 2 };

/// Generic top of a module tree: bypass crossfade, output gain, panic and preset loading, and the
/// lists through which the processor tells the wrapper what has changed. What the effect does lies
/// in the hooks of the derived class.
///
/// Own parameters, behind those of the modules
///     0 Bypass off, on: crossfades in 10 ms; the effect stops once it has faded out
///     1 Panic: a change to 1 clears all processing state
///     2 PresetLoading: held at 1 while parameters are restored; its fall resets the state
///     3 GUI Visible: somebody looks at the feedback
///     4 OutputGain -12..12 dB, glides in 100 ms, on the effect alone
///
/// No feedback is sent until a preset load has once ended. N and B are the capacities of the lists
/// of parameter and of blob changes; a full list drops what comes.
template <uint32_t N, uint32_t B, class... M>
class EffectProcessor : public details::FXConstructionHelper<N, B, M...> {
    using Base = details::FXConstructionHelper<N, B, M...>;

public:
    enum OwnId : uint32_t {
        Bypass = Base::kFirstOwnId,
        Panic,
        PresetLoading,
        GuiVisible,
        OutputGain,
        kFirstDerivedId
    };

    template <class... ModuleArguments>
    EffectProcessor(std::string treeName, const dsp::ParameterTable& derivedParameters,
                    ModuleArguments&&... moduleArguments)
        : Base(std::move(treeName), StandardParameters(),
               std::forward<ModuleArguments>(moduleArguments)...) {
        bypassSmoother.range = 1.0;
        this->AppendParameters(derivedParameters);
        this->SetParameterValue(OutputGain, 0.0f);
    }

    void OnSetup(float sampleRate, uint32_t blockSize) override;
    void OnReset(bool hard) override;
    bool OnProcess(dsp::ProcessBlock& block) override;
    bool UpdateParameters(dsp::ProcessBlock& block) override;
    bool SetParameterNormalized(uint32_t id, float position) override {
        // A preset load may begin and end between two blocks.
        presetRaised = presetRaised || (id == PresetLoading && position >= 0.5f);
        return Base::SetParameterNormalized(id, position);
    }

    virtual void OnEffectSetup(float sampleRate, uint32_t blockSize) = 0;
    virtual void OnEffectReset(bool hard) = 0;
    /// Writes block's two outputs.
    virtual bool ProcessEffect(dsp::ProcessBlock& block, uint32_t channelMode) = 0;
    virtual bool UpdateEffect(dsp::ProcessBlock& block) = 0;
    virtual void OnPanic() {}
    virtual bool IsBlobParameter(uint32_t) { return false; }
    virtual void GetToolTip(uint32_t, uint64_t capacity, char* text) {
        if (capacity != 0)
            text[0] = '\0';
    }
    /// In samples.
    virtual uint32_t GetLatency() { return 0; }
    virtual BlobData GetBlobParameter(uint32_t) { return {}; }

    /// Hands out a change list and empties it.
    bool TakeParameterChanges(const ParameterChange** list, int32_t* count) {
        return Take(parameterChanges, parameterChangeCount, list, count);
    }
    bool TakeBlobChanges(const BlobChange** list, int32_t* count) {
        return Take(blobChanges, blobChangeCount, list, count);
    }

protected:
    BypassState GetBypassState() {
        if (!bypassSmoother.IsAtRest())
            return kCrossfading;
        return this->Value(Bypass) > 0.0f ? kBypassed : kEffectRuns;
    }
    bool CanSendFeedback() const { return feedbackReady && !presetLoading; }
    bool PushParameterChange(uint32_t index, float value) {
        if (!CanSendFeedback() || parameterChangeCount >= N)
            return false;
        parameterChanges[parameterChangeCount++] = {index, 0, value};
        return true;
    }
    bool PushBlobChange(uint32_t index, uint64_t size, const void* data) {
        if (!CanSendFeedback() || blobChangeCount >= B)
            return false;
        blobChanges[blobChangeCount++] = {index, size, data};
        return true;
    }

private:
    static dsp::ParameterTable StandardParameters() {
        using P = dsp::ParameterSpec;
        return {P::Stepped("Bypass", 2), P::Stepped("Panic", 2), P::Stepped("PresetLoading", 2),
                P::Stepped("GUI Visible", 2), P::Linear("OutputGain", -12.0f, 12.0f)};
    }
    template <class Change>
    static bool Take(const Change* changes, uint64_t& used, const Change** list, int32_t* count) {
        *list = used > 0 ? changes : nullptr;
        *count = static_cast<int32_t>(used);
        used = 0;
        return *count > 0;
    }
    static uint32_t ModeOf(const dsp::ProcessBlock& block) {
        if (block.numOutputs == 1)
            return kMonoOut;
        return block.numInputs == 1 ? kMonoIn : kStereo;
    }
    void WriteOutputs(const dsp::ProcessBlock& block, uint32_t channelCount);

    bool feedbackReady = false;  ///< a preset load has ended
    bool presetLoading = false;
    bool presetRaised = false;  ///< a preset load has begun whose end is still to come
    uint64_t parameterChangeCount = 0;
    ParameterChange parameterChanges[N] = {};
    uint64_t blobChangeCount = 0;
    BlobChange blobChanges[B] = {};
    dsp::AlignedVector scratch;                ///< backs the four buffers below
    float* wet[2] = {};                        ///< the effect's stereo result
    dsp::SmootherSRL bypassSmoother{0.01};     // 0 the effect, 1 the bypass
    dsp::SmootherLPF outputGainSmoother{0.1};  // linear
    float* bypassRamp = nullptr;
    float* gainRamp = nullptr;
};

template <uint32_t N, uint32_t B, class... M>
void EffectProcessor<N, B, M...>::OnSetup(float sampleRate, uint32_t blockSize) {
    scratch.assign(size_t{4} * blockSize, 0.0f);
    wet[0] = scratch.data();
    wet[1] = wet[0] + blockSize;
    bypassRamp = wet[1] + blockSize;
    gainRamp = bypassRamp + blockSize;
    for (dsp::Smoother* smoother : {static_cast<dsp::Smoother*>(&bypassSmoother),
                                    static_cast<dsp::Smoother*>(&outputGainSmoother)}) {
        smoother->sampleRate = static_cast<double>(sampleRate);
        smoother->stepLength = 1;
        smoother->UpdateCoefficients();
    }
    OnEffectSetup(sampleRate, blockSize);
}

template <uint32_t N, uint32_t B, class... M>
void EffectProcessor<N, B, M...>::OnReset(bool hard) {
    bypassSmoother.Reset(this->Value(Bypass));
    outputGainSmoother.Reset(dsp::DecibelsToGain(this->Value(OutputGain)));
    OnEffectReset(hard);
}

template <uint32_t N, uint32_t B, class... M>
bool EffectProcessor<N, B, M...>::UpdateParameters(dsp::ProcessBlock& block) {
    if (this->IsChanged(Panic) && this->Position(Panic) >= 0.5f) {
        this->Reset(true);
        OnPanic();
    }
    if (this->IsChanged(PresetLoading)) {
        presetLoading = this->Position(PresetLoading) >= 0.5f;
        if (!presetLoading && presetRaised) {
            presetRaised = false;
            this->Reset(false);
            feedbackReady = true;
        }
    }
    if (this->IsChanged(Bypass))
        bypassSmoother.SetTarget(this->Value(Bypass));
    if (this->IsChanged(OutputGain))
        outputGainSmoother.SetTarget(dsp::DecibelsToGain(this->Value(OutputGain)));
    return UpdateEffect(block);
}

template <uint32_t N, uint32_t B, class... M>
bool EffectProcessor<N, B, M...>::OnProcess(dsp::ProcessBlock& block) {
    if (block.numInputs == 0)
        return false;
    const uint32_t mode = ModeOf(block);
    const uint32_t channelCount = std::min(mode == kMonoOut ? 1u : 2u, block.numOutputs);
    dsp::ProcessBlock inner = block;
    inner.outputs = wet;
    inner.numOutputs = 2;
    const bool result = ProcessEffect(inner, mode);

    if (!outputGainSmoother.IsAtRestAt(1.0)) {
        outputGainSmoother.FillBlock(gainRamp, block.numFrames);
        for (uint32_t c = 0; c < channelCount; ++c)
            for (uint32_t i = 0; i < block.numFrames; ++i)
                wet[c][i] *= gainRamp[i];
    }
    WriteOutputs(block, channelCount);
    return result;
}

/// The output gain acts on the effect, not on the bypass.
template <uint32_t N, uint32_t B, class... M>
void EffectProcessor<N, B, M...>::WriteOutputs(const dsp::ProcessBlock& block,
                                               uint32_t channelCount) {
    const BypassState state = GetBypassState();
    if (state == kCrossfading)
        bypassSmoother.FillBlock(bypassRamp, block.numFrames);
    for (uint32_t c = 0; c < channelCount; ++c) {
        const float* const dry = block.inputs[std::min(c, block.numInputs - 1)];
        float* const out = block.outputs[c];
        if (state == kCrossfading) {
            for (uint32_t i = 0; i < block.numFrames; ++i)
                out[i] = (1.0f - bypassRamp[i]) * wet[c][i] + bypassRamp[i] * dry[i];
        } else {
            std::copy_n(state == kBypassed ? dry : wet[c], block.numFrames, out);
        }
    }
}

}  // namespace Quorvan::Processor
