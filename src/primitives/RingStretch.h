#pragma once

#include <algorithm>
#include <cstdint>

#include "primitives/DelayLine.h"

namespace Quorvan::dsp {

/// Calls part(place, first, count) on the one or two stretches that count samples of a ring take
/// from a place 0..size - 1 on; first counts the samples ahead of the stretch. count is at most the
/// ring's size.
template <class Part>
void ForEachStretch(const DelayLine& line, int32_t place, int32_t count, const Part& part) {
    const int32_t first = std::min(count, line.size - place);
    part(line.data + place, 0, first);
    if (first < count)
        part(line.data, first, count - first);
}

/// A place up to one round ahead of the ring's start or behind its end, as one inside.
inline int32_t PlaceInRing(const DelayLine& line, int32_t place) {
    if (place < 0)
        return place + line.size;
    return place >= line.size ? place - line.size : place;
}

/// Copies count samples from a place on, which may lie up to one round outside.
inline void CopyFromRing(const DelayLine& line, int32_t place, int32_t count, float* out) {
    ForEachStretch(
        line, PlaceInRing(line, place), count,
        [out](const float* from, int32_t at, int32_t n) { std::copy_n(from, n, out + at); });
}

/// Writes count samples, as so many calls of Write would. The line must have been cleared after
/// Resize.
inline void WriteToRing(DelayLine& line, const float* in, int32_t count) {
    ForEachStretch(line, line.writeIndex, count,
                   [in](float* to, int32_t at, int32_t n) { std::copy_n(in + at, n, to); });
    line.writeIndex = PlaceInRing(line, line.writeIndex + count);
}

}  // namespace Quorvan::dsp
