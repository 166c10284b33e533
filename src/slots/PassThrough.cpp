#include "slots/PassThrough.h"

#include <algorithm>
#include <utility>

#include "framework/ParameterTable.h"

namespace Quorvan::Processor {

namespace {

const dsp::ParameterTable& Table() {
    static const dsp::ParameterTable table = {dsp::ParameterSpec::Raw("BypassUselessParam")};
    return table;
}

}  // namespace

PassThrough::PassThrough(std::string moduleName)
    : UnitModule(std::move(moduleName), 2, 2, Table()) {}

void PassThrough::OnSetup(float, uint32_t) {}

void PassThrough::OnReset(bool) {}

bool PassThrough::UpdateParameters(dsp::ProcessBlock&) { return true; }

bool PassThrough::OnProcess(dsp::ProcessBlock& block) {
    for (uint32_t c = 0; c < 2; ++c)
        if (block.inputs[c] != block.outputs[c])
            std::copy_n(block.inputs[c], block.numFrames, block.outputs[c]);
    return true;
}

}  // namespace Quorvan::Processor
