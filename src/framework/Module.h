#pragma once

#include <cstdint>
#include <string>

#include "framework/ParameterNameSink.h"
#include "framework/ProcessBlock.h"

namespace Quorvan::dsp {

/// Base of everything that processes signals or holds parameters: a name, channel limits, a life
/// cycle (Setup, Reset, Process, Terminate) and a flat list of parameters with ids from 0.
///
/// Setup takes memory and derives what depends on the rate; it may be called again for a new rate.
/// Process allocates nothing. Parameter operations come between blocks; ids are not checked.
class Module {
public:
    Module(std::string moduleName, uint32_t inputs, uint32_t outputs);
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    virtual ~Module() = default;
    /// blockSize is the largest block that will come, in samples.
    virtual void Setup(float sampleRate, uint32_t blockSize);
    virtual void Terminate();
    /// Clears what sounds; parameters keep their values. With hard, all count as changed.
    virtual void Reset(bool hard);
    virtual bool SetParameterNormalized(uint32_t id, float position) = 0;
    virtual float GetParameterNormalized(uint32_t id) = 0;
    /// Appends the parameter's full name from this module on.
    virtual void GetParameterName(uint32_t id, ParameterNameSink& out) = 0;
    /// Runs one block. False, with the outputs untouched, where the block has too many channels.
    virtual bool Process(ProcessBlock& block);

    virtual void OnSetup(float sampleRate, uint32_t blockSize) = 0;
    virtual void OnReset(bool hard) = 0;
    virtual bool OnProcess(ProcessBlock& block) = 0;

    const std::string& Name() const { return name; }
    uint32_t NumInputs() const { return numInputs; }
    uint32_t NumOutputs() const { return numOutputs; }
    bool NeedsFullUpdate() const { return needsFullUpdate; }
    void RequestFullUpdate() { needsFullUpdate = true; }

protected:
    bool ChannelsFit(const ProcessBlock& block) const {
        return block.numInputs <= numInputs && block.numOutputs <= numOutputs;
    }
    /// The module's name and a separator, or nothing for a module without a name.
    void AppendPath(ParameterNameSink& out) const;

    std::string name;
    uint32_t numInputs;   ///< the most input channels accepted
    uint32_t numOutputs;  ///< the most output channels accepted
    /// Set until the first block after construction, Setup or Reset has run: in that block a module
    /// jumps to its targets instead of gliding.
    bool needsFullUpdate = true;
};

}  // namespace Quorvan::dsp
