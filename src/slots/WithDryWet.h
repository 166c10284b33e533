#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <tuple>
#include <utility>

#include "framework/ModuleContainer.h"
#include "primitives/AlignedVector.h"
#include "primitives/SmootherLPF.h"

namespace Quorvan::engine {

namespace details {

/// Own parameter of every WithDryWet.
inline const dsp::ParameterTable& DryWetTable() {
    static const dsp::ParameterTable table = {dsp::ParameterSpec::Raw("DryWet")};
    return table;
}

}  // namespace details

/// Gives a module without a mix of its own a dry/wet. The kChannels mixed channels lie from
/// kFirstInput and from kFirstOutput on. Not in place: the dry signal is read behind the child.
///
/// Inputs      0, 1 audio; 2 the child's modulation row; 3 modulation row of DryWet
/// Outputs     0, 1 audio
/// Parameters  those of M, then DryWet 0..1: read once a block, glides in 10 ms
template <dsp::ContainerChildModule M, uint32_t kFirstInput, uint32_t kChannels,
          uint32_t kFirstOutput>
class WithDryWet final : public dsp::ModuleContainer<M> {
    using Base = dsp::ModuleContainer<M>;
    static constexpr uint32_t kChildInputs = kFirstInput + kChannels + 1;
    static constexpr uint32_t kMixRow = kChildInputs;

public:
    enum Id : uint32_t { DryWet = Base::kFirstOwnId };
    static constexpr uint32_t kParameterCount = Base::kFirstOwnId + 1;

    /// The child bears the same name; both are nameless in a slot.
    explicit WithDryWet(std::string moduleName)
        : Base(moduleName, kMixRow + 1, kFirstOutput + kChannels, details::DryWetTable(),
               std::tuple(moduleName)) {}

    void OnSetup(float rate, uint32_t blockSize) override {
        mixBuffer.assign(blockSize, 0.0f);
        mixSmoother.stepLength = 1;
        mixSmoother.sampleRate = static_cast<double>(rate);
        mixSmoother.UpdateCoefficients();
    }

    void OnReset(bool) override { mixSmoother.Reset(this->Value(DryWet)); }

    bool UpdateParameters(dsp::ProcessBlock&) override { return true; }

    bool OnProcess(dsp::ProcessBlock& block) override {
        dsp::ProcessBlock inner = block;
        inner.numInputs = kChildInputs;
        const bool result = this->template Child<0>().Process(inner);
        mixSmoother.SetTarget(this->ParameterAt(DryWet).GetBlockValue(block, kMixRow));
        mixSmoother.FillBlock(mixBuffer.data(), block.numFrames);
        for (uint32_t c = 0; c < kChannels; ++c)
            Mix(block.inputs[kFirstInput + c], block.outputs[kFirstOutput + c], block.numFrames);
        return result;
    }

private:
    void Mix(const float* in, float* out, uint32_t count) const {
        const float* const mix = mixBuffer.data();
        for (uint32_t i = 0; i < count; ++i)
            out[i] = (1.0f - mix[i]) * in[i] + mix[i] * out[i];
    }

    // State.
    dsp::SmootherLPF mixSmoother{0.01};  // one tick a sample

    // Buffers.
    dsp::AlignedVector mixBuffer;
};

}  // namespace Quorvan::engine
