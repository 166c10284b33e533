#include "host/instrument/BypassFader.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace Quorvan::Host {

namespace {

constexpr double kFadeSeconds = 0.010;

}  // namespace

void BypassFader::Prepare(const StreamFormat& streamFormat, uint32_t latencyFrames,
                          uint32_t maxFrames) {
    format = streamFormat;
    latency = latencyFrames;
    step = static_cast<float>(1.0 / std::max(1.0, kFadeSeconds * format.sampleRate));
    const uint32_t length = std::bit_ceil(latency + maxFrames);
    mask = length - 1;
    for (uint32_t c = 0; c < rings.size(); ++c)
        rings[c].assign(c < format.inputs ? length : 0, 0.0f);
    Reset();
}

void BypassFader::Reset() {
    for (std::vector<float>& ring : rings)
        std::fill(ring.begin(), ring.end(), 0.0f);
    mix = aim;
    lastTaken = 0;
}

void BypassFader::Take(const float* const* inputs, uint32_t first, uint32_t frames) {
    const uint32_t start = taken & mask;
    const uint32_t straight = std::min(frames, mask + 1 - start);
    for (uint32_t c = 0; c < format.inputs; ++c) {
        const float* const input = inputs != nullptr ? inputs[c] : nullptr;
        float* const ring = rings[c].data();
        if (input == nullptr) {
            std::fill_n(ring + start, straight, 0.0f);
            std::fill_n(ring, frames - straight, 0.0f);
        } else {
            std::copy_n(input + first, straight, ring + start);
            std::copy_n(input + first + straight, frames - straight, ring);
        }
    }
    taken += frames;
    lastTaken = frames;
}

float BypassFader::Delayed(uint32_t output, uint32_t frame) const {
    const uint32_t channel = std::min(output, format.inputs - 1);
    const uint32_t place = (taken - lastTaken + frame - latency) & mask;
    float sample = rings[channel][place];
    if (format.outputs == 1 && format.inputs == 2)
        sample = 0.5f * (sample + rings[1][place]);
    return std::isnormal(sample) ? sample : 0.0f;
}

void BypassFader::Mix(float* const* outputs, uint32_t first, uint32_t frames) {
    if (outputs == nullptr || (mix == 0.0f && aim == 0.0f))
        return;
    const float begin = mix;
    for (uint32_t c = 0; c < format.outputs; ++c) {
        mix = begin;
        float* const output = outputs[c];
        for (uint32_t i = 0; i < frames; ++i) {
            mix = aim > mix ? std::min(aim, mix + step) : std::max(aim, mix - step);
            if (output == nullptr)
                continue;
            const float dry = Delayed(c, i);
            float& sample = output[first + i];
            sample = mix == 1.0f ? dry : sample + mix * (dry - sample);
        }
    }
}

}  // namespace Quorvan::Host
