#include "granular/GrainLength.h"

#include <algorithm>

namespace Quorvan::dsp {

namespace {

constexpr float kShortestMs = 10.0f;
constexpr float kLongestReversedMs = 5000.0f;
constexpr float kLongestForwardSeconds = 5.0f;

/// Tape samples of a grain's size at its ratio.
float SizeInSamples(const GrainLength::Loop& loop, float ratio, float sizeMs) {
    const float samples = sizeMs * loop.sampleRate * 0.001f;
    return loop.beat && ratio >= 1.0f ? samples : ratio * samples;
}

float Shortest(const GrainLength::Loop& loop) { return kShortestMs * loop.sampleRate * 0.001f; }

}  // namespace

float GrainLength::Reversed(const Loop& loop, double start, float ratio, float sizeMs) {
    double room = start - loop.writePosition;
    if (room < 1.0)
        room += loop.effectiveLength;
    const float shared = static_cast<float>(room) * (ratio / (ratio + 1.0f));
    const float cap = std::min(shared, kLongestReversedMs * loop.sampleRate * 0.001f);
    return std::min(std::max(SizeInSamples(loop, ratio, sizeMs), Shortest(loop)), cap);
}

float GrainLength::Forward(const Loop& loop, double start, float ratio, float sizeMs) {
    float room = kLongestForwardSeconds * loop.sampleRate;
    if (ratio < 1.0f) {
        const double d = loop.writePosition - start;
        room = d >= -1.0
                   ? ratio * static_cast<float>(loop.effectiveLength - d) / (1.0f - ratio)
                   : ratio * static_cast<float>(d) / (ratio - 1.0f);
    } else if (ratio > 1.0f) {
        const float loopSamples = loop.lengthMs * loop.sampleRate * 0.001f;
        room = std::min(room, loop.beat ? loopSamples : (ratio / (ratio - 1.0f)) * loopSamples);
    }
    return std::min(std::max(SizeInSamples(loop, ratio, sizeMs), Shortest(loop)), room);
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
