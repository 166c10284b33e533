#include "framework/Module.h"

#include <utility>

namespace Quorvan::dsp {

Module::Module(std::string moduleName, uint32_t inputs, uint32_t outputs)
    : name(std::move(moduleName)), numInputs(inputs), numOutputs(outputs) {}

void Module::Setup(float sampleRate, uint32_t blockSize) {
    OnSetup(sampleRate, blockSize);
    OnReset(true);
    needsFullUpdate = true;
}

void Module::Terminate() {}

void Module::Reset(bool hard) {
    OnReset(hard);
    needsFullUpdate = true;
}

bool Module::Process(ProcessBlock& block) {
    if (!ChannelsFit(block))
        return false;
    const bool result = OnProcess(block);
    needsFullUpdate = false;
    return result;
}

void Module::AppendPath(ParameterNameSink& out) const {
    if (name.empty())
        return;
    out.Append(name);
    out.AppendSeparator();
}

}  // namespace Quorvan::dsp
