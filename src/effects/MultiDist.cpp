#include "effects/MultiDist.h"

#include <algorithm>
#include <utility>

#include "framework/ParameterTable.h"

namespace Quorvan::dsp {

namespace {

const ParameterTable& Table() {
    using P = ParameterSpec;
    static const ParameterTable table = {
        P::Stepped("Stereo", 2).AtPosition(1.0f),
        P::Stepped("DistType", 13).AtValue(1.0f),
        P::Linear("Drive", 0.0f, 60.0f),
        P::Linear("OutputGain", -24.0f, 3.0f).AtValue(0.0f),
        P::Stepped("AutoComp", 2).AtPosition(1.0f),
    };
    return table;
}

}  // namespace

MultiDist::MultiDist(std::string moduleName) : UnitModule(std::move(moduleName), 3, 2, Table()) {}

void MultiDist::OnSetup(float, uint32_t) {}

void MultiDist::OnReset(bool) {}

bool MultiDist::UpdateParameters(ProcessBlock&) { return true; }

bool MultiDist::OnProcess(ProcessBlock& block) {
    for (uint32_t c = 0; c < 2; ++c)
        std::copy_n(block.inputs[c], block.numFrames, block.outputs[c]);
    return true;
}

}  // namespace Quorvan::dsp
