#include "effects/Chorus.h"

#include <algorithm>
#include <utility>

#include "framework/ParameterTable.h"

namespace Quorvan::dsp {

namespace {

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

}  // namespace

Chorus::Chorus(std::string moduleName) : UnitModule(std::move(moduleName), 5, 2, Table()) {}

void Chorus::OnSetup(float, uint32_t) {}

void Chorus::OnReset(bool) {}

bool Chorus::UpdateParameters(ProcessBlock&) { return true; }

bool Chorus::OnProcess(ProcessBlock& block) {
    for (uint32_t c = 0; c < 2; ++c)
        if (block.inputs[c] != nullptr && block.outputs[c] != nullptr)
            std::copy_n(block.inputs[c], block.numFrames, block.outputs[c]);
    return true;
}

}  // namespace Quorvan::dsp
