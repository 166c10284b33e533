#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "host/engine/ChannelBlock.h"
#include "host/engine/EngineListener.h"
#include "host/engine/GrainReporter.h"
#include "host/engine/StreamFormat.h"
#include "host/engine/Transport.h"
#include "processor/IProcessor.h"

namespace Quorvan::Host {

/// Owns one processor and runs it block by block on memory of its own.
class ProcessorDriver {
public:
    explicit ProcessorDriver(std::optional<uint64_t> seed);
    ~ProcessorDriver();
    ProcessorDriver(const ProcessorDriver&) = delete;
    ProcessorDriver& operator=(const ProcessorDriver&) = delete;

    /// Throws std::bad_alloc where the processor, or this, gets no memory for the format: then
    /// BlockFrames is 0 and nothing may run until a call that succeeds.
    void Prepare(const StreamFormat& newFormat);
    /// One block from the input channels into the output ones. Listeners hear of it as of the block
    /// that begins at firstFrame; an empty list keeps it to itself. Answers how many output samples
    /// were no finite numbers: they are 0 now.
    uint64_t RunBlock(const Transport& transport, uint64_t firstFrame,
                      std::span<EngineListener* const> listeners);
    /// A block of silence that nobody hears of. Leaves the channels as they are.
    void RunSilence(const Transport& transport);

    void SendFeedback(bool sends) { format.sendsFeedback = sends; }
    uint32_t BlockFrames() const { return blockFrames; }
    uint32_t LatencyFrames() const { return processor->GetLatency(); }
    Processor::IProcessor_V5& GetProcessor() const { return *processor; }

    ChannelBlock inputs, sideChain;  ///< what the next block takes
    ChannelBlock outputs, aux;       ///< what the last block gave

private:
    void RunOn(ChannelBlock& in, ChannelBlock& side, ChannelBlock& out, ChannelBlock& auxOut,
               const Transport& transport);
    void Report(const Transport& transport, uint64_t firstFrame,
                std::span<EngineListener* const> listeners) const;
    void PassChangesOn(std::span<EngineListener* const> listeners);

    std::unique_ptr<Processor::IProcessor_V5> processor;
    GrainReporter grains;
    StreamFormat format;
    uint32_t blockFrames = 0;
    ChannelBlock silentInputs, silentSideChain, unheardOutputs, unheardAux;
};

}  // namespace Quorvan::Host
