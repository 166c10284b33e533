#include "effects/LookaheadGain.h"

#include <algorithm>

#include "primitives/RingStretch.h"

namespace Quorvan::dsp {

namespace {
constexpr int32_t kShortestRamp = 3;
}

void LookaheadGain::Resize(int32_t capacity) {
    ring.Resize(capacity);
    weights.assign(static_cast<size_t>(capacity), 0.0f);
    length = 0;
    unityCount = 0;
}

void LookaheadGain::Clear() {
    ring.Clear();
    unityCount = 0;
}

void LookaheadGain::SetLength(int32_t samples) {
    if (samples == length)
        return;
    length = samples;
    for (int32_t k = 0; k < length; ++k)
        weights[static_cast<size_t>(k)] = 1.0f - static_cast<float>(k) / static_cast<float>(length);
}

void LookaheadGain::Process(float* gains, uint32_t count) {
    float* const data = ring.data;
    const int32_t size = ring.size;
    int32_t write = ring.writeIndex;
    int32_t read = write < length ? write - length + size : write - length;
    float last = data[write == 0 ? size - 1 : write - 1];
    for (uint32_t i = 0; i < count; ++i) {
        const float gain = gains[i];
        data[write] = gain;
        const float leaving = data[read];
        if (gain < last && length >= kShortestRamp)
            DrawRamp(write, leaving, gain);
        last = gain;
        gains[i] = leaving;
        write = write + 1 == size ? 0 : write + 1;
        read = read + 1 == size ? 0 : read + 1;
    }
    ring.writeIndex = write;
    unityCount = 0;
}

bool LookaheadGain::ProcessUnity(float* gains, uint32_t count) {
    const auto added = static_cast<int32_t>(count);
    const int32_t known = unityCount;
    if (known >= length && added <= ring.size)
        WriteToRing(ring, gains, added);
    else
        Process(gains, count);
    unityCount = std::min(known + added, ring.size);
    return known >= length;
}

/// From the newest place backwards, until the curve is found to lie below the ramp. At most two
/// stretches, since the ring wraps once.
void LookaheadGain::DrawRamp(int32_t newest, float from, float to) {
    const int32_t places = length - 2;  // neither the newest nor the one that leaves next
    const int32_t below = std::min(places, newest);
    if (LowerTo(newest - 1, 1, below, from, to - from))
        LowerTo(ring.size - 1, 1 + below, places - below, from, to - from);
}

/// Lowers count gains, from the place top downwards, to the ramp whose weight there is that of
/// index first; false where one was no higher than the ramp.
bool LookaheadGain::LowerTo(int32_t top, int32_t first, int32_t count, float from, float fall) {
    float* const data = ring.data;
    const float* const weight = weights.data() + first;
    for (int32_t k = 0; k < count; ++k) {
        const float ramp = weight[k] * fall + from;
        if (!(ramp < data[top - k]))
            return false;
        data[top - k] = ramp;
    }
    return true;
}

}  // namespace Quorvan::dsp
