#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "framework/ModuleContainer.h"
#include "primitives/AlignedVector.h"
#include "primitives/FiniteSamples.h"
#include "primitives/SmootherSRL.h"

namespace Quorvan::engine {

namespace details {

/// Own parameters of every ModuleVariant, for a choice among count alternatives.
inline dsp::ParameterTable VariantTable(uint32_t count) {
    using P = dsp::ParameterSpec;
    return {
        P::Stepped("ModuleType", count),     P::Stepped("Bypass", 2),
        P::Stepped("CopyOnBypass", 2),       P::Stepped("CrossfadeOnBypass", 2),
        P::Stepped("FadeOnModuleChange", 2),
    };
}

}  // namespace details

/// Holds all its alternatives at all times and runs one of them, so that a switch is a parameter
/// write. An alternative that does not run keeps its state and its changed flags.
///
/// Inputs      the audio channels, then for each alternative in turn as many channels as it takes
///             behind its audio: it is run on the audio and on its own stretch. A block must bring
///             all of them.
/// Outputs     the audio channels
/// Parameters  those of the alternatives, then
///             ModuleType: index of the alternative wanted
///             Bypass off, on; CopyOnBypass off: a bypassed slot is silent, on: it gives its input
///             CrossfadeOnBypass off, on: bypassing takes 50 ms
///             FadeOnModuleChange off, on: a change fades out and in again, 25 ms each
template <uint32_t kAudioInputs, uint32_t kAudioOutputs, dsp::ContainerChildModule... M>
class ModuleVariant : public dsp::ModuleContainer<M...> {
    using Base = dsp::ModuleContainer<M...>;
    static_assert(kAudioInputs == kAudioOutputs, "a bypassed slot copies channel by channel");

public:
    using Base::kChildCount;
    using Base::kFirstOwnId;

    enum Id : uint32_t {
        ModuleType = Base::kFirstOwnId,
        Bypass,
        CopyOnBypass,
        CrossfadeOnBypass,
        FadeOnModuleChange
    };
    /// Behind the ids above, the first of the derived class.
    static constexpr uint32_t kFirstDerivedId = FadeOnModuleChange + 1;

    /// totalParameters: the size of the id space with the derived class's parameters.
    /// childArguments: for each alternative a tuple of its constructor arguments.
    template <class... ChildArguments>
    ModuleVariant(std::string moduleName, uint32_t totalParameters,
                  ChildArguments&&... childArguments)
        : Base(std::move(moduleName), kAudioInputs, kAudioOutputs,
               details::VariantTable(static_cast<uint32_t>(kChildCount)),
               std::forward<ChildArguments>(childArguments)...) {
        this->parameters.reserve(totalParameters - kFirstOwnId);
        size_t k = 0;
        this->ForEachChild([this, &k](dsp::Module& child) {
            alternatives[k] = {&child, this->numInputs};
            this->numInputs += child.NumInputs() - kAudioInputs;
            ++k;
        });
        alternativeInputs.resize(this->numInputs);
    }

    void OnSetup(float rate, uint32_t blockSize) override {
        for (dsp::SmootherSRL* fade : {&bypassFade, &moduleFade}) {
            fade->stepLength = 1;
            fade->sampleRate = static_cast<double>(rate);
            fade->UpdateCoefficients();
        }
        bypassFade.Reset(0.0f);
        moduleFade.Reset(1.0f);
        activeIndex = GetWantedIndex();
        slotBlockSize = blockSize;
        slotBuffer.assign(size_t{2} * blockSize, 0.0f);
        bypassRamp = slotBuffer.data();
        moduleRamp = bypassRamp + blockSize;
    }

    void OnReset(bool) override {
        const bool crossfading = IsOn(CrossfadeOnBypass) && this->Value(Bypass) < 0.5f;
        bypassFade.Reset(crossfading ? 1.0f : 0.0f);
        moduleFade.Reset(1.0f);
        activeIndex = GetWantedIndex();
    }

    /// Reaches only the alternative that runs: the others keep what they hold, unless it has
    /// overflowed.
    void Reset(bool hard) override {
        alternatives[ActivePlace()].module->Reset(hard);
        alternatives[ActivePlace()].hasOverflowed = false;
        for (Alternative& alternative : alternatives)
            if (std::exchange(alternative.hasOverflowed, false))
                alternative.module->Reset(hard);
        OnReset(hard);
        this->needsFullUpdate = true;
        if (hard)
            this->MarkAllChanged();
    }

    /// Starts the fades, and clears the alternative that a change or the end of a bypass brings in.
    bool UpdateParameters(dsp::ProcessBlock&) override {
        if (this->IsChanged(FadeOnModuleChange) && !IsOn(FadeOnModuleChange)) {
            moduleFade.Reset(1.0f);
            activeIndex = GetWantedIndex();
        }
        const bool bypassEnds = this->IsChanged(Bypass) && this->Value(Bypass) < 0.5f;
        if (this->IsChanged(ModuleType))
            ChangeModule();
        else if (bypassEnds)
            ResetWanted();
        if (IsOn(CrossfadeOnBypass) && this->IsChanged(Bypass))
            bypassFade.SetTarget(IsOn(Bypass) ? 0.0f : 1.0f);
        else if (this->IsChanged(CrossfadeOnBypass) && this->Value(CrossfadeOnBypass) < 0.5f)
            bypassFade.Reset(0.0f);
        return true;
    }

    bool OnProcess(dsp::ProcessBlock& block) override {
        if (block.numInputs != this->numInputs)
            return false;
        const bool moving = !bypassFade.IsAtRest();
        if (IsOn(CrossfadeOnBypass) && moving)
            RunAlternative(block);
        if (!IsOn(Bypass) && !moving)
            return RunAlternative(block);
        if (moving)
            bypassFade.FillBlock(bypassRamp, slotBlockSize);
        for (uint32_t c = 0; c < kAudioOutputs; ++c) {
            if (moving)
                MixBypass(block.inputs[c], block.outputs[c], block.numFrames);
            else
                WriteBypass(block.inputs[c], block.outputs[c], block.numFrames);
        }
        return true;
    }

    int32_t GetWantedIndex() { return this->Index(ModuleType); }

    /// The alternative to run now. Without a fade a change takes effect here; with one the old
    /// alternative stays until it has faded out.
    int32_t GetActiveIndex() {
        if (!IsOn(FadeOnModuleChange))
            activeIndex = GetWantedIndex();
        return activeIndex;
    }

protected:
    bool IsFading() const { return !bypassFade.IsAtRest() || !moduleFade.IsAtRest(); }
    bool IsOn(uint32_t id) { return this->Value(id) > 0.5f; }

    /// Runs the active alternative on the audio and its stretch of the channels.
    bool RunAlternative(dsp::ProcessBlock& block) {
        Alternative& active = alternatives[ActivePlace()];
        dsp::ProcessBlock inner = block;
        inner.inputs = alternativeInputs.data();
        inner.numInputs = active.module->NumInputs();
        std::copy_n(block.inputs, kAudioInputs, alternativeInputs.data());
        std::copy_n(block.inputs + active.firstRow, inner.numInputs - kAudioInputs,
                    alternativeInputs.data() + kAudioInputs);
        const bool result = active.module->Process(inner);
        for (uint32_t c = 0; c < kAudioOutputs; ++c)
            active.hasOverflowed =
                active.hasOverflowed || dsp::HasNonFinite(block.outputs[c], block.numFrames);
        if (IsOn(FadeOnModuleChange) && !moduleFade.IsAtRest())
            ApplyModuleFade(block);
        return result;
    }

private:
    struct Alternative {
        dsp::Module* module = nullptr;
        uint32_t firstRow = 0;       ///< its stretch of the slot's input channels starts here
        bool hasOverflowed = false;  ///< has put out what is no number since its last reset
    };

    size_t ActivePlace() { return static_cast<size_t>(GetActiveIndex()); }
    void ResetWanted() { alternatives[static_cast<size_t>(GetWantedIndex())].module->Reset(false); }

    void ChangeModule() {
        if (activeIndex == GetWantedIndex() && !moduleFade.IsAtRest()) {
            // The change is taken back while the old alternative fades out: it comes up again as it
            // sounds.
            moduleFade.SetTarget(1.0f);
            return;
        }
        if (activeIndex != GetWantedIndex()) {
            const bool fadeOn = IsOn(FadeOnModuleChange);
            if (!fadeOn)
                activeIndex = GetWantedIndex();
            moduleFade.SetTarget(fadeOn ? 0.0f : 1.0f);
        }
        ResetWanted();
    }

    void ApplyModuleFade(dsp::ProcessBlock& block) {
        for (uint32_t i = 0; i < block.numFrames; ++i)
            moduleRamp[i] = moduleFade.Tick();
        for (uint32_t c = 0; c < kAudioOutputs; ++c)
            for (uint32_t i = 0; i < block.numFrames; ++i)
                block.outputs[c][i] *= moduleRamp[i];
        if (moduleFade.IsAtRest() && activeIndex != GetWantedIndex()) {
            activeIndex = GetWantedIndex();
            moduleFade.SetTarget(1.0f);
        }
    }

    /// The bypassed output; nothing has run that could have left anything in it.
    void WriteBypass(const float* in, float* out, uint32_t count) {
        if (!IsOn(CopyOnBypass))
            std::fill_n(out, count, 0.0f);
        else if (in != out)
            std::copy_n(in, count, out);
    }

    void MixBypass(const float* in, float* out, uint32_t count) {
        const bool copies = IsOn(CopyOnBypass);
        for (uint32_t i = 0; i < count; ++i) {
            const float g = bypassRamp[i];
            out[i] = copies ? (1.0f - g) * in[i] + g * out[i] : g * out[i];
        }
    }

    std::array<Alternative, kChildCount> alternatives{};

    // State.
    dsp::SmootherSRL bypassFade{0.05};   ///< 1 effect in full, 0 effect out
    dsp::SmootherSRL moduleFade{0.025};  ///< gain of the alternative around a change
    int32_t activeIndex = 0;             ///< the alternative that runs

    // Buffers.
    uint32_t slotBlockSize = 0;
    float* bypassRamp = nullptr;  ///< one block, in slotBuffer
    float* moduleRamp = nullptr;  ///< one block, behind it
    dsp::AlignedVector slotBuffer;
    std::vector<float*> alternativeInputs;  ///< channels of the alternative that runs
};

}  // namespace Quorvan::engine
