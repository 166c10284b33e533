#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "host/engine/StreamFormat.h"

namespace Quorvan::Host {

/// Fades in 10 ms between what the engine gives and the input as it came in, delayed by the
/// engine's latency, so that nothing clicks or moves in time. One input goes to all outputs.
///
/// Audio side only, but for Prepare.
class BypassFader {
public:
    /// maxFrames is the longest piece that Take is given.
    void Prepare(const StreamFormat& streamFormat, uint32_t latencyFrames, uint32_t maxFrames);
    /// Forgets the delayed input, and stands at its aim.
    void Reset();
    void Aim(bool bypassed) { aim = bypassed ? 1.0f : 0.0f; }

    /// Ahead of the engine: keeps frames of the input, from first on. The outputs may lie on it.
    void Take(const float* const* inputs, uint32_t first, uint32_t frames);
    /// Behind the engine: mixes the frames last taken into the outputs.
    void Mix(float* const* outputs, uint32_t first, uint32_t frames);

private:
    float Delayed(uint32_t output, uint32_t frame) const;

    StreamFormat format;
    uint32_t latency = 0;
    float step = 1.0f;                        ///< of the fade, a frame
    float aim = 0.0f;                         ///< 1 where bypassed
    float mix = 0.0f;                         ///< share of the input now
    std::array<std::vector<float>, 2> rings;  ///< of a power of two: latency and a piece
    uint32_t mask = 0;
    uint32_t taken = 0;      ///< frames so far, wraps
    uint32_t lastTaken = 0;  ///< of them, in the last piece
};

}  // namespace Quorvan::Host
