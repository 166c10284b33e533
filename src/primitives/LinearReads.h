#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "primitives/AllBetween.h"
#include "primitives/FloatLanes.h"

namespace Quorvan::dsp {

/// Reads of a ring with fractions, many at once: each between the sample at a place and the older
/// one ahead of it. Places lie from one round ahead of the ring's start to its end; fractions go
/// towards the older sample.
///
/// Mostly all of it lies in one piece: then both samples come by one load.
class LinearReads {
public:
    LinearReads(const float* ringData, int32_t ringSize) : ring(ringData), size(ringSize) {}

    void Read(const int32_t* places, const float* fractions, uint32_t count, float* out) const {
        const uint32_t whole = count / 4 * 4;
        uint32_t done = 0;
        if (AllBetween(places, whole, 1, size - 1))
            done = ReadPairs(ring, places, fractions, whole, out);
        else if (AllBetween(places, whole, 1 - size, -1))
            done = ReadPairs(ring + size, places, fractions, whole, out);
        for (uint32_t n = done; n < count; ++n) {
            const int32_t near = places[n] < 0 ? places[n] + size : places[n];
            const int32_t far = near < 1 ? size - 1 : near - 1;
            out[n] = (ring[far] - ring[near]) * fractions[n] + ring[near];
        }
    }

private:
    /// count is a multiple of 4, and answered.
    static uint32_t ReadPairs(const float* base, const int32_t* places, const float* fractions,
                              uint32_t count, float* out) {
        using TwoPairs = double __attribute__((vector_size(16)));
        const auto pair = [base, places](uint32_t n) {
            double bits;
            std::memcpy(&bits, base + places[n] - 1, sizeof bits);
            return bits;
        };
        for (uint32_t n = 0; n < count; n += 4) {
            const auto early = std::bit_cast<FloatLanes>(TwoPairs{pair(n), pair(n + 1)});
            const auto late = std::bit_cast<FloatLanes>(TwoPairs{pair(n + 2), pair(n + 3)});
            const FloatLanes older = EvenLanes(early, late), newer = OddLanes(early, late);
            StoreLanes(out + n, (older - newer) * LoadLanes(fractions + n) + newer);
        }
        return count;
    }

    const float* ring;
    int32_t size;
};

}  // namespace Quorvan::dsp
