#pragma once

#include <cstdint>

namespace Quorvan::dsp {

/// One running grain: a read head on the tape under an envelope. Positions are in samples of the
/// tape, gains linear.
struct Grain {
    float startPosition = 0.0f;
    double readPosition = 0.0;  ///< first read position
    double increment = 0.0;     ///< read head speed in samples per sample; negative when reversed
    uint32_t startFrame = 0;    ///< sample of this block at which it begins; 0 after its first
    float length = 0.0f;        ///< in source samples
    float panGainLeft = 0.0f, panGainRight = 0.0f;
    double elapsed = 0.0;  ///< source samples read so far
    float outGainLeft = 0.0f, outGainRight = 0.0f;
    bool crossing = false;         ///< it may crossfade where it meets the write head
    double wrappedPosition = 0.0;  ///< second read position
    uint64_t clearUntil = 0;       ///< sample up to which it is known to meet nothing
    uint32_t wrapLength = 0;       ///< where the second read position wraps
    bool swapped = false;          ///< reads by the second position from now on
    bool wasCrossfading = false;
    float envelope = 0.0f;   ///< present value
    bool releasing = false;  ///< fade-out asked for
    bool released = false;   ///< fade-out ended
    int32_t shape = 0;
    float shapeA = 0.0f, shapeB = 0.0f;
    bool displayed = false;  ///< the user interface shows it
    bool reversed = false;
};

}  // namespace Quorvan::dsp
