#include "primitives/BlockDelay.h"

#include <algorithm>

namespace Quorvan::dsp {

namespace {

/// Calls part(place, first, count) on the one or two stretches of a ring from a place on.
template <class Part>
void ForEachStretch(const DelayLine& line, int32_t place, int32_t count, const Part& part) {
    const int32_t first = std::min(count, line.size - place);
    part(line.data + place, 0, first);
    if (first < count)
        part(line.data, first, count - first);
}

}  // namespace

void RunBlockDelay(DelayLine& line, uint32_t delay, const float* in, float* out, uint32_t count) {
    const auto frames = static_cast<int32_t>(count);
    const auto late = static_cast<int32_t>(delay);
    int32_t read = line.writeIndex - late;
    if (read < 0)
        read += line.size;
    int32_t done = 0;
    // A delay shorter than the block reads what the block itself has written: pieces of its length.
    const int32_t piece = late == 0 ? frames : std::min(late, frames);
    while (done < frames) {
        const int32_t now = std::min(piece, frames - done);
        ForEachStretch(line, read, now, [&](const float* from, int32_t at, int32_t n) {
            std::copy_n(from, n, out + done + at);
        });
        ForEachStretch(line, line.writeIndex, now, [&](float* to, int32_t at, int32_t n) {
            std::copy_n(in + done + at, n, to);
        });
        const auto forward = [&line, now](int32_t place) {
            return place + now >= line.size ? place + now - line.size : place + now;
        };
        read = forward(read);
        line.writeIndex = forward(line.writeIndex);
        done += now;
    }
}

}  // namespace Quorvan::dsp
