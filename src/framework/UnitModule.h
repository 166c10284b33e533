#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "framework/Module.h"
#include "framework/Parameter.h"
#include "framework/ParameterTable.h"

namespace Quorvan::dsp {

/// Leaf of the module tree: owns its parameters and one changed flag for each. A write stores and
/// raises the flag; the module looks at its flags in UpdateParameters, once a block, and they are
/// cleared when the block is done.
class UnitModule : public Module {
public:
    /// One parameter for each row of table, in its order, all counting as changed.
    UnitModule(std::string moduleName, uint32_t inputs, uint32_t outputs,
               const ParameterTable& table);
    /// count nameless parameters in their default state.
    UnitModule(std::string moduleName, uint32_t inputs, uint32_t outputs, uint32_t count);

    void Setup(float sampleRate, uint32_t blockSize) override;
    void Reset(bool hard) override;
    bool SetParameterNormalized(uint32_t id, float position) override;
    float GetParameterNormalized(uint32_t id) override;
    void GetParameterName(uint32_t id, ParameterNameSink& out) override;
    bool Process(ProcessBlock& block) override;
    virtual bool SetParameterValue(uint32_t id, float value);
    /// The module's control-rate step. False leaves the block unprocessed and the flags raised.
    virtual bool UpdateParameters(ProcessBlock& block) = 0;

    Parameter& ParameterAt(uint32_t id) { return parameters[id]; }
    /// The record behind an id, null where there is none.
    Parameter* FindRecord(uint32_t id) {
        return id < parameters.size() ? &parameters[id] : nullptr;
    }
    float Value(uint32_t id) { return parameters[id].GetValue(); }
    float Position(uint32_t id) { return parameters[id].GetNormalized(); }
    /// The physical value truncated to an index.
    int32_t Index(uint32_t id) { return static_cast<int32_t>(parameters[id].GetValue()); }

    /// Gives a parameter a new form and range at its minimum (constructors), and marks it changed.
    void Configure(uint32_t id, uint32_t kind, float min, float max, float x = 0.5f);
    void ConfigureStepped(uint32_t id, uint32_t count, float first = 0.0f, float step = 1.0f);
    bool IsChanged(uint32_t id) const { return changed[id] != 0; }
    void MarkChanged(uint32_t id) { changed[id] = 1; }
    void MarkAllChanged();
    void ClearChanged();

protected:
    std::vector<Parameter> parameters;
    std::vector<uint8_t> changed;
};

}  // namespace Quorvan::dsp
