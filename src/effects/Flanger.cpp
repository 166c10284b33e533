#include "effects/Flanger.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "framework/ParameterTable.h"

namespace Quorvan::dsp {

namespace {

const ParameterTable& Table() {
    using P = ParameterSpec;
    static const ParameterTable table = {
        P::Raw("MinDelay"),
        P::Raw("DepthFlanger"),
    };
    return table;
}

}  // namespace

Flanger::Flanger(std::string moduleName)
    : ModuleContainer(std::move(moduleName), 5, 2, Table(), std::tuple("Chorus")) {
    Chorus& chorus = Child<0>();
    chorus.Configure(Chorus::DelayMs, PotardKind::kLinear, 0.0f, 30.0f);
    chorus.Configure(Chorus::Depth, PotardKind::kLinear, 0.0f, 10.0f);
    chorus.ConfigureStepped(Chorus::Voices, 8, 1.0f);
    chorus.Configure(Chorus::DryWet, PotardKind::kLinear, 0.0f, 1.0f);
    chorus.Configure(Chorus::Feedback, PotardKind::kLinear, -1.0f, 1.0f);
    chorus.SetParameterNormalized(Chorus::LPFOn, 1.0f);
    chorus.SetParameterNormalized(Chorus::HPFOn, 1.0f);
    chorus.SetParameterValue(Chorus::Voices, 1.0f);
}

void Flanger::OnSetup(float, uint32_t) {}

void Flanger::OnReset(bool) {}

bool Flanger::UpdateParameters(ProcessBlock&) { return true; }

bool Flanger::OnProcess(ProcessBlock& block) {
    for (uint32_t c = 0; c < 2; ++c)
        if (block.inputs[c] != nullptr)
            std::copy_n(block.inputs[c], block.numFrames, block.outputs[c]);
    return true;
}

}  // namespace Quorvan::dsp
