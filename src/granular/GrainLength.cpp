#include "granular/GrainLength.h"

#include <algorithm>

namespace Quorvan::dsp {

namespace {

constexpr float kShortestMs = 10.0f;
constexpr float kLongestReversedMs = 5000.0f;
constexpr float kLongestForwardSeconds = 5.0f;

/// Samples in one millisecond.
float PerMs(const GrainLength::Loop& loop) { return loop.sampleRate * 0.001f; }

/// Tape samples of a grain's size at its ratio, at least the shortest and at most room.
float Bounded(const GrainLength::Loop& loop, float ratio, float sizeMs, float room) {
    const float k = PerMs(loop);
    const float length = loop.beat && ratio >= 1.0f ? k * sizeMs : ratio * k * sizeMs;
    return std::min(std::max(length, kShortestMs * k), room);
}

}  // namespace

float GrainLength::Reversed(const Loop& loop, double start, float ratio, float sizeMs) {
    double room = start - loop.writePosition;
    if (room < 1.0)
        room += loop.effectiveLength;
    // The grain and the head share the way in proportion to their speeds.
    const float shared = static_cast<float>(room) * (ratio / (ratio + 1.0f));
    return Bounded(loop, ratio, sizeMs, std::min(shared, kLongestReversedMs * PerMs(loop)));
}

float GrainLength::Forward(const Loop& loop, double start, float ratio, float sizeMs) {
    float room = kLongestForwardSeconds * loop.sampleRate;
    if (ratio < 1.0f) {
        const double d = loop.writePosition - start;
        room = d >= -1.0 ? ratio * static_cast<float>(loop.effectiveLength - d) / (1.0f - ratio)
                         : ratio * static_cast<float>(d) / (ratio - 1.0f);
    } else if (ratio > 1.0f) {
        const float lap = loop.beat ? loop.lengthMs : ratio / (ratio - 1.0f) * loop.lengthMs;
        room = std::min(room, lap * PerMs(loop));
    }
    return Bounded(loop, ratio, sizeMs, room);
}

bool GrainLength::Crosses(const Loop& loop, double start, float ratio, float length) {
    const double d = loop.writePosition - start;
    const float r = ratio;
    if (r > 1.0f) {
        const double gap = d >= 0.0 ? d : loop.effectiveLength + d;
        return length > static_cast<float>(gap) / (r - 1.0f);
    }
    if (r < 1.0f) {
        const float caught = d >= 0.0 ? static_cast<float>(loop.effectiveLength - d) / (1.0f - r)
                                      : static_cast<float>(d) / (r - 1.0f);
        return caught > length;
    }
    return false;
}

}  // namespace Quorvan::dsp
