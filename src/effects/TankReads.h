#pragma once

#include <array>
#include <cstdint>

#include "effects/TankLengths.h"
#include "primitives/DelayLine.h"

namespace Quorvan::dsp {

/// Frames that the tank takes at once; a stage runs over all of them before the next one does.
inline constexpr uint32_t kTankChunk = 64;
using TankChunk = std::array<float, kTankChunk>;

/// Reads of a chunk while the size rests: whole samples back, but for the modulated ones.
///
/// start is the place in the ring that a length of 0 would read for the first frame; it may lie up
/// to a chunk outside. What is read is older than start and not yet written over.
class RestingReads {
public:
    explicit RestingReads(const TankLengths& tankLengths) : lengths(tankLengths) {}

    void Read(const DelayLine& ring, int32_t start, uint32_t place, uint32_t count,
              float* out) const;
    /// From the place of the next write on; modulation, in samples, adds to the length.
    void ReadModulated(const DelayLine& ring, uint32_t place, const float* modulation,
                       uint32_t count, float* out) const;

private:
    const TankLengths& lengths;
};

/// The same while the size moves: every length has a fraction of its own in every frame.
class GlidingReads {
public:
    /// scale: one entry a frame.
    explicit GlidingReads(const float* frameScale) : scale(frameScale) {}

    void Read(const DelayLine& ring, int32_t start, uint32_t place, uint32_t count,
              float* out) const;
    void ReadModulated(const DelayLine& ring, uint32_t place, const float* modulation,
                       uint32_t count, float* out) const;

private:
    const float* scale;
};

}  // namespace Quorvan::dsp
