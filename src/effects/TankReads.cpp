#include "effects/TankReads.h"

#include "primitives/LinearReads.h"
#include "primitives/RingStretch.h"

namespace Quorvan::dsp {

namespace {

/// Where a chunk is read with fractions. Whole numbers and fractions are found in loops of their
/// own, which become vector code.
struct Taps {
    std::array<int32_t, kTankChunk> back;  ///< whole samples
    TankChunk fraction;                    ///< adds to them, 0..1
};

/// Adds modulation to the taps: the whole number below the sum goes to back.
void Modulate(Taps& taps, const float* modulation, uint32_t count) {
    for (uint32_t n = 0; n < count; ++n) {
        const float sum = modulation[n] + taps.fraction[n];
        const auto truncated = static_cast<int32_t>(sum);
        const int32_t below = sum < static_cast<float>(truncated) ? truncated - 1 : truncated;
        taps.back[n] += below;
        taps.fraction[n] = sum - static_cast<float>(below);
    }
}

void ReadTaps(const DelayLine& ring, int32_t start, const Taps& taps, uint32_t count, float* out) {
    std::array<int32_t, kTankChunk> places;
    for (uint32_t n = 0; n < count; ++n)
        places[n] = start + static_cast<int32_t>(n) - taps.back[n];
    LinearReads(ring.data, ring.size).Read(places.data(), taps.fraction.data(), count, out);
}

Taps GlidingTaps(uint32_t place, const float* scale, uint32_t count) {
    Taps taps;
    for (uint32_t n = 0; n < count; ++n) {
        const float length = TankLengths::At(place, scale[n]);
        taps.back[n] = static_cast<int32_t>(length);
        taps.fraction[n] = length - static_cast<float>(taps.back[n]);
    }
    return taps;
}

}  // namespace

void RestingReads::Read(const DelayLine& ring, int32_t start, uint32_t place, uint32_t count,
                        float* out) const {
    CopyFromRing(ring, start - lengths.whole[place], static_cast<int32_t>(count), out);
}

void RestingReads::ReadModulated(const DelayLine& ring, uint32_t place, const float* modulation,
                                 uint32_t count, float* out) const {
    Taps taps;
    taps.back.fill(lengths.whole[place]);
    taps.fraction.fill(0.0f);
    Modulate(taps, modulation, count);
    ReadTaps(ring, ring.writeIndex, taps, count, out);
}

void GlidingReads::Read(const DelayLine& ring, int32_t start, uint32_t place, uint32_t count,
                        float* out) const {
    ReadTaps(ring, start, GlidingTaps(place, scale, count), count, out);
}

void GlidingReads::ReadModulated(const DelayLine& ring, uint32_t place, const float* modulation,
                                 uint32_t count, float* out) const {
    Taps taps = GlidingTaps(place, scale, count);
    Modulate(taps, modulation, count);
    ReadTaps(ring, ring.writeIndex, taps, count, out);
}

}  // namespace Quorvan::dsp
