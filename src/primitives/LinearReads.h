#pragma once

#include <array>
#include <cstdint>

#include "primitives/FloatLanes.h"

namespace Quorvan::dsp {

/// Reads of a ring with fractions, many at once: each between the sample at a place and the older
/// one ahead of it.
///
/// Places lie from one round ahead of the ring's start to its end. Mostly all of them, and those
/// ahead of them, lie in one piece: then both samples come by one load.
template <uint32_t kMost>
class LinearReads {
public:
    std::array<int32_t, kMost> place;
    std::array<float, kMost> fraction;  ///< towards the older sample, 0..1

    void Read(const float* ring, int32_t size, uint32_t count, float* out) const {
        if (count == 0)
            return;
        int32_t lowest = place[0], highest = place[0];
        for (uint32_t n = 0; n < count; ++n) {
            lowest = place[n] < lowest ? place[n] : lowest;
            highest = place[n] > highest ? place[n] : highest;
        }
        uint32_t done = 0;
        if (lowest >= 1)
            done = ReadPieces(ring, count, out);
        else if (highest < 0 && lowest + size >= 1)
            done = ReadPieces(ring + size, count, out);
        for (uint32_t n = done; n < count; ++n)
            out[n] = ReadOne(ring, size, n);
    }

private:
    /// Four at a time; answers how many that are.
    uint32_t ReadPieces(const float* ring, uint32_t count, float* out) const {
        const auto pair = [this, ring](uint32_t n) {
            std::array<float, 2> samples;
            std::memcpy(&samples, ring + place[n] - 1, sizeof samples);
            return samples;
        };
        uint32_t n = 0;
        for (; n + 4 <= count; n += 4) {
            const auto w = pair(n), x = pair(n + 1), y = pair(n + 2), z = pair(n + 3);
            const FloatLanes wx{w[0], w[1], x[0], x[1]}, yz{y[0], y[1], z[0], z[1]};
            const FloatLanes older = EvenLanes(wx, yz), newer = OddLanes(wx, yz);
            StoreLanes(out + n, (older - newer) * LoadLanes(&fraction[n]) + newer);
        }
        return n;
    }
    float ReadOne(const float* ring, int32_t size, uint32_t n) const {
        const int32_t near = place[n] < 0 ? place[n] + size : place[n];
        const int32_t far = near < 1 ? size - 1 : near - 1;
        return (ring[far] - ring[near]) * fraction[n] + ring[near];
    }
};

}  // namespace Quorvan::dsp
