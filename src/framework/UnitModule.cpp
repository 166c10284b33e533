#include "framework/UnitModule.h"

#include <algorithm>
#include <utility>

namespace Quorvan::dsp {

UnitModule::UnitModule(std::string moduleName, uint32_t inputs, uint32_t outputs,
                       const ParameterTable& table)
    : Module(std::move(moduleName), inputs, outputs), changed(table.size(), 1) {
    parameters.reserve(table.size());
    for (const ParameterSpec& row : table)
        parameters.push_back(row.Make());
}

UnitModule::UnitModule(std::string moduleName, uint32_t inputs, uint32_t outputs, uint32_t count)
    : Module(std::move(moduleName), inputs, outputs), parameters(count), changed(count, 0) {}

void UnitModule::Setup(float sampleRate, uint32_t blockSize) {
    Module::Setup(sampleRate, blockSize);
    MarkAllChanged();
}

void UnitModule::Reset(bool hard) {
    Module::Reset(hard);
    if (hard)
        MarkAllChanged();
}

bool UnitModule::SetParameterNormalized(uint32_t id, float position) {
    changed[id] = parameters[id].WriteNormalized(position, changed[id] != 0);
    return true;
}

bool UnitModule::SetParameterValue(uint32_t id, float value) {
    changed[id] = parameters[id].WriteValue(value, changed[id] != 0);
    return true;
}

float UnitModule::GetParameterNormalized(uint32_t id) { return parameters[id].GetNormalized(); }

void UnitModule::GetParameterName(uint32_t id, ParameterNameSink& out) {
    AppendPath(out);
    out.Append(parameters[id].name);
}

bool UnitModule::Process(ProcessBlock& block) {
    if (!UpdateParameters(block))
        return false;
    bool result = false;
    if (ChannelsFit(block)) {
        result = OnProcess(block);
        needsFullUpdate = false;
    }
    ClearChanged();
    return result;
}

void UnitModule::Configure(uint32_t id, uint32_t kind, float min, float max, float x) {
    parameters[id].Configure(kind, min, max, x);
    MarkChanged(id);
}

void UnitModule::ConfigureStepped(uint32_t id, uint32_t count, float first, float step) {
    parameters[id].ConfigureStepped(count, first, step);
    MarkChanged(id);
}

void UnitModule::MarkAllChanged() { std::fill(changed.begin(), changed.end(), uint8_t{1}); }

void UnitModule::ClearChanged() { std::fill(changed.begin(), changed.end(), uint8_t{0}); }

}  // namespace Quorvan::dsp
