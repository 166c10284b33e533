#include "effects/CompensatedMultiDist.h"

#include <tuple>
#include <utility>

#include "framework/ParameterTable.h"
#include "primitives/Decibels.h"

namespace Quorvan::Processor {

namespace {

const dsp::ParameterTable& Table() {
    using P = dsp::ParameterSpec;
    static const dsp::ParameterTable table = {
        P::Linear("InGainCompensated", -24.0f, 0.0f).AtValue(0.0f),
    };
    return table;
}

}  // namespace

CompensatedMultiDist::CompensatedMultiDist(std::string moduleName)
    : ModuleContainer(std::move(moduleName), 3, 2, Table(), std::tuple("MultiDist")) {}

void CompensatedMultiDist::OnSetup(float, uint32_t blockSize) {
    for (dsp::AlignedVector& buffer : scaled)
        buffer.assign(blockSize, 0.0f);
}

void CompensatedMultiDist::OnReset(bool) {}

bool CompensatedMultiDist::UpdateParameters(dsp::ProcessBlock&) { return true; }

bool CompensatedMultiDist::OnProcess(dsp::ProcessBlock& block) {
    const float gain = dsp::DecibelsToGain(Value(InGainCompensated));
    std::array<float*, 3> inputs = {scaled[0].data(), scaled[1].data(), block.inputs[2]};
    for (uint32_t c = 0; c < scaled.size(); ++c)
        for (uint32_t i = 0; i < block.numFrames; ++i)
            scaled[c][i] = block.inputs[c][i] * gain;
    dsp::ProcessBlock shaped = block;
    shaped.inputs = inputs.data();
    shaped.numInputs = static_cast<uint32_t>(inputs.size());
    const bool result = Child<0>().Process(shaped);
    const float inverse = 1.0f / gain;
    for (uint32_t c = 0; c < scaled.size(); ++c)
        for (uint32_t i = 0; i < block.numFrames; ++i)
            block.outputs[c][i] *= inverse;
    return result;
}

}  // namespace Quorvan::Processor
