#pragma once

#include <cstdint>

#include "primitives/AllBetween.h"
#include "primitives/DelayLine.h"
#include "primitives/FloatLanes.h"

namespace Quorvan::dsp {

/// Reads of kPolynomial of a line, many at once: what Read answers at each of count delays.
///
/// Mostly all four points of all of them lie in one piece: then they come by one load.
class PolynomialReads {
public:
    static void Read(const DelayLine& line, const int32_t* delays, const float* fractions,
                     uint32_t count, float* out) {
        // The points reach from two places below to one above.
        const int32_t shortest = line.writeIndex - line.size + 2;
        const int32_t longest = line.writeIndex - 2;
        const uint32_t whole = count / 4 * 4;
        uint32_t done = 0;
        if (AllBetween(delays, whole, shortest, longest))
            done = ReadPieces(line.data + line.writeIndex, delays, fractions, whole, out);
        else if (AllBetween(delays, whole, shortest + line.size, longest + line.size))
            done =
                ReadPieces(line.data + line.writeIndex + line.size, delays, fractions, whole, out);
        for (uint32_t n = done; n < count; ++n)
            out[n] = DelayLine::Polynomial(line.PointsAround(delays[n]), fractions[n]);
    }

private:
    /// count is a multiple of 4, and answered.
    static uint32_t ReadPieces(const float* newest, const int32_t* delays, const float* fractions,
                               uint32_t count, float* out) {
        for (uint32_t n = 0; n < count; n += 4) {
            const auto points = [newest, at = delays + n](uint32_t k) {
                return LoadLanes(newest - at[k] - 2);  // q, b, a, p
            };
            const FloatLanes w = points(0), x = points(1), y = points(2), z = points(3);
            const FloatLanes qb0 = ZipLower(w, x), qb1 = ZipLower(y, z);
            const FloatLanes ap0 = ZipUpper(w, x), ap1 = ZipUpper(y, z);
            StoreLanes(out + n, DelayLine::Between(UpperPairs(ap0, ap1), LowerPairs(ap0, ap1),
                                                   UpperPairs(qb0, qb1), LowerPairs(qb0, qb1),
                                                   LoadLanes(fractions + n)));
        }
        return count;
    }
};

}  // namespace Quorvan::dsp
