#include "effects/Reverb.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "framework/ParameterTable.h"

namespace Quorvan::dsp {

namespace {

const ParameterTable& Table() {
    using P = ParameterSpec;
    constexpr uint32_t exponential = PotardKind::kExponential;
    static const ParameterTable table = {
        P::Curved("LPBandWith", exponential, 100.0f, 20000.0f, 6.0f).AtPosition(0.9995f),
        P::Curved("HPBandWith", exponential, 30.0f, 10000.0f, 6.0f).AtPosition(0.0005f),
        P::Linear("Wet", 0.0f, 1.0f).AtPosition(0.5f),
        P::Stepped("EarlyOn", 2),
        P::Raw("EarlySize").AtValue(1.0f),
        P::Linear("EarlyMix", 0.0f, 1.0f),
        P::Stepped("InvertEarly", 2),
        P::Linear("OutputGain", -20.0f, 20.0f).AtValue(0.0f),
        P::Linear("MSMix", 0.0f, 0.5f).AtValue(0.5f),
        P::Linear("SmoothTimeDelayCont", 0.0f, 1.0f).AtValue(0.4f),
    };
    return table;
}

}  // namespace

Reverb::Reverb(std::string moduleName)
    : ModuleContainer(std::move(moduleName), 10, 2, Table(), std::tuple("")) {}

void Reverb::OnSetup(float, uint32_t) {}

void Reverb::OnReset(bool) {}

bool Reverb::UpdateParameters(ProcessBlock&) { return true; }

bool Reverb::OnProcess(ProcessBlock& block) {
    for (uint32_t c = 0; c < 2; ++c)
        if (block.inputs[c] != nullptr)
            std::copy_n(block.inputs[c], block.numFrames, block.outputs[c]);
    return true;
}

}  // namespace Quorvan::dsp
