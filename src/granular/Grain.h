#pragma once

#include <cstdint>

namespace Quorvan::dsp {

/// One running grain: a read head on the tape under an envelope. Positions are in samples of the
/// tape, gains linear.
struct Grain {
    double readPosition = 0.0;     ///< first read position
    double wrappedPosition = 0.0;  ///< second read position
    double increment = 0.0;        ///< read head speed in samples per sample; negative if reversed
    double elapsed = 0.0;          ///< source samples read so far
    uint64_t clearUntil = 0;       ///< sample up to which it is known to meet nothing
    uint32_t wrapLength = 0;       ///< where the second read position wraps
    uint32_t startFrame = 0;       ///< sample of this block at which it begins; 0 after its first
    float length = 0.0f;           ///< in source samples
    float startPosition = 0.0f;
    float envelope = 0.0f;  ///< present value
    int32_t shape = 0;
    float shapeA = 0.0f, shapeB = 0.0f;
    float panGainLeft = 0.0f, panGainRight = 0.0f;
    float outGainLeft = 0.0f, outGainRight = 0.0f;
    bool reversed = false;
    bool crossing = false;  ///< it may crossfade where it meets the write head
    bool swapped = false;   ///< reads by the second position from now on
    bool wasCrossfading = false;
    bool releasing = false;  ///< fade-out asked for
    bool released = false;   ///< fade-out ended
    bool displayed = false;  ///< the user interface shows it
};

}  // namespace Quorvan::dsp
