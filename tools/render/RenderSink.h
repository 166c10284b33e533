#pragma once

#include <cstddef>
#include <cstdint>

namespace Quorvan::Tools {

/// A stretch of sound on its way through a render.
struct SoundPiece {
    uint64_t frame = 0;  ///< its first frame, counted from the start of the input
    size_t frames = 0;
    const float* const* channels = nullptr;
    uint32_t channelCount = 0;
};

/// Something that a render feeds: a file, a meter, a picture. Pieces come in order and without
/// gaps; frame n of the output belongs to frame n of the input, and the input runs ahead. What
/// happens inside the processor is told by the engine's listeners.
class RenderSink {
public:
    virtual ~RenderSink() = default;

    /// The input has been processed up to the end of piece; silence where it has ended.
    virtual void OnInput(const SoundPiece&) {}
    virtual void OnOutput(const SoundPiece&) {}
    /// The input has ended at this frame; comes before the output that reaches so far.
    virtual void OnInputEnd(uint64_t /*frame*/) {}
    /// The last piece has come.
    virtual void OnEnd() {}
};

}  // namespace Quorvan::Tools
