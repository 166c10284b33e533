#include "granular/OutputStage.h"

#include <algorithm>

#include "granular/BitCrusher.h"
#include "granular/LogQuantizer.h"

namespace Quorvan::dsp {

namespace {
constexpr uint32_t kChannels = 2;
}

void OutputStage::SetPreset(int32_t index, BitCrusher& crusher) {
    constexpr auto last = static_cast<int32_t>(kCrushPresets.size()) - 1;
    preset = kCrushPresets[static_cast<size_t>(std::clamp(index, 0, last))];
    outGain = 1.0f / preset.inGain;
    if (preset.effect != CrushPreset::Effect::kBitCrusher)
        return;
    crusher.SetParameterValue(BitCrusher::Bitdepth, preset.bitDepth);
    crusher.SetParameterValue(BitCrusher::Downsample, preset.downsample);
}

void OutputStage::Apply(const ProcessBlock& block, BitCrusher& crusher) const {
    if (preset.effect == CrushPreset::Effect::kNone)
        return;
    Scale(block, preset.inGain);
    if (preset.effect == CrushPreset::Effect::kLogQuantizer) {
        for (uint32_t c = 0; c < kChannels; ++c)
            LogQuantizer::Process(block.outputs[c], block.numFrames);
    } else {
        ProcessBlock inner = block;
        inner.inputs = inner.outputs;
        inner.numInputs = inner.numOutputs = kChannels;
        crusher.Process(inner);
    }
    Scale(block, outGain);
}

void OutputStage::Scale(const ProcessBlock& block, float gain) {
    for (uint32_t c = 0; c < kChannels; ++c)
        for (uint32_t i = 0; i < block.numFrames; ++i)
            block.outputs[c][i] *= gain;
}

}  // namespace Quorvan::dsp
