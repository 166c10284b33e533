#pragma once

#include <cstdint>
#include <span>

#include "granular/GrainListener.h"
#include "host/engine/EngineListener.h"

namespace Quorvan::Host {

/// Hears of grains from the granular engine, in its own terms, and passes them on in the shell's.
class GrainReporter final : public dsp::GrainListener {
public:
    /// The frames of a grain count from here on, and listeners hear of it; none where the list is
    /// empty.
    void BeginBlock(uint64_t frame, std::span<EngineListener* const> hearers) {
        firstFrame = frame;
        listeners = hearers;
    }
    void OnGrainStart(const dsp::Grain& grain) override;

private:
    uint64_t firstFrame = 0;
    std::span<EngineListener* const> listeners;
};

}  // namespace Quorvan::Host
