#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "host/engine/GrainStart.h"
#include "host/engine/StreamFormat.h"
#include "host/engine/Transport.h"

namespace Quorvan::Processor {
class IProcessor_V5;
}

namespace Quorvan::Host {

/// One block that the processor has just done. Pointers hold until the call returns.
struct BlockReport {
    uint64_t firstFrame = 0;  ///< its first frame on the clock of Engine::FramesIn
    uint32_t frames = 0;      ///< its length, the same for every block
    Transport transport;      ///< at its first frame
    uint32_t outputCount = 0;
    std::array<const float*, 2> outputs{};        ///< ahead of the queue: no queue latency in them
    std::array<const float*, kAuxOutputs> aux{};  ///< likewise
    std::array<const float*, 2> inputs{};         ///< what the block was made from
    uint32_t inputCount = 0;
    Processor::IProcessor_V5* processor = nullptr;  ///< for reading
};

/// What an engine tells about while it processes. All calls come from inside Engine::Process, on
/// its thread: an implementation that runs on an audio thread may not allocate, lock or wait.
class EngineListener {
public:
    virtual ~EngineListener() = default;

    /// A block is done. Comes before the changes that the block made.
    virtual void OnBlock(const BlockReport&) {}
    /// The processor has moved a parameter by itself.
    virtual void OnParameterChange(uint32_t /*index*/, float /*position*/) {}
    /// A binary parameter has new content, which must be copied at once if it is to be kept.
    virtual void OnBlobChange(uint32_t /*index*/, std::span<const uint8_t> /*data*/) {}
    /// A grain has started.
    virtual void OnGrainStart(const GrainStart&) {}
};

}  // namespace Quorvan::Host
