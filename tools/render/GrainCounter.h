#pragma once

#include <cstdint>
#include <vector>

#include "host/engine/EngineListener.h"
#include "tools/render/RenderSink.h"

namespace Quorvan::Tools {

/// Counts the grains that start within the output, which may end ahead of the processing. A trigger
/// starts two, a left and a right one.
class GrainCounter final : public Host::EngineListener, public RenderSink {
public:
    void OnGrainStart(const Host::GrainStart& grain) override { waiting.push_back(grain.frame); }
    void OnOutput(const SoundPiece& piece) override {
        const uint64_t end = piece.frame + piece.frames;
        count += std::erase_if(waiting, [end](uint64_t frame) { return frame < end; });
    }
    uint64_t Count() const { return count; }

private:
    std::vector<uint64_t> waiting;  ///< frames of those that no output has reached yet
    uint64_t count = 0;
};

}  // namespace Quorvan::Tools
