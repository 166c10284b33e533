#pragma once

#include <cstddef>
#include <cstdint>

namespace Quorvan::Tools {

/// Channels that lie apart, into frames one after another. Two at once, so that compilers can turn
/// the loop into vectors.
template <class Sample>
void Interleave(const Sample* const* channels, uint32_t count, size_t frames, Sample* interleaved) {
    if (count == 2) {
        const Sample *const left = channels[0], *const right = channels[1];
        for (size_t i = 0; i < frames; ++i) {
            interleaved[2 * i] = left[i];
            interleaved[2 * i + 1] = right[i];
        }
        return;
    }
    for (uint32_t c = 0; c < count; ++c)
        for (size_t i = 0; i < frames; ++i)
            interleaved[i * count + c] = channels[c][i];
}

/// The way back, to frame at of the channels.
template <class Sample>
void Separate(const Sample* interleaved, uint32_t count, size_t frames, Sample* const* channels,
              size_t at) {
    if (count == 2) {
        Sample *const left = channels[0] + at, *const right = channels[1] + at;
        for (size_t i = 0; i < frames; ++i) {
            left[i] = interleaved[2 * i];
            right[i] = interleaved[2 * i + 1];
        }
        return;
    }
    for (uint32_t c = 0; c < count; ++c)
        for (size_t i = 0; i < frames; ++i)
            channels[c][at + i] = interleaved[i * count + c];
}

}  // namespace Quorvan::Tools
