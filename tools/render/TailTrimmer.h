#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "tools/render/RenderSink.h"

namespace Quorvan::Tools {

/// Passes a render on, but for the silence at the end of its tail: output behind the input's end
/// waits until something audible follows it.
class TailTrimmer final : public RenderSink {
public:
    void AddSink(RenderSink& sink) { sinks.push_back(&sink); }

    void OnInput(const SoundPiece& piece) override;
    void OnOutput(const SoundPiece& piece) override;
    void OnInputEnd(uint64_t frame) override;
    void OnEnd() override;

    /// Frames passed on.
    uint64_t Frames() const { return passed; }

private:
    void PassOn(const SoundPiece& piece, size_t from, size_t count);
    void Hold(const SoundPiece& piece, size_t from);
    void LetGo();

    std::vector<RenderSink*> sinks;
    uint64_t inputEnd = std::numeric_limits<uint64_t>::max();
    uint64_t passed = 0;
    std::vector<std::vector<float>> held;  ///< quiet frames behind those that were passed on
};

}  // namespace Quorvan::Tools
