#include "host/engine/ChannelBlock.h"

#include <algorithm>
#include <bit>

namespace Quorvan::Host {

namespace {

/// NaN or infinite: all bits of the exponent are set.
uint32_t IsBad(float sample) {
    constexpr uint32_t kExponent = 0x7f800000;
    return (std::bit_cast<uint32_t>(sample) & kExponent) == kExponent ? 1 : 0;
}

/// Counts first, without a branch, because there is hardly ever one.
uint64_t CleanSamples(float* samples, uint32_t count) {
    uint32_t bad = 0;
    for (uint32_t i = 0; i < count; ++i)
        bad += IsBad(samples[i]);
    if (bad != 0)
        std::replace_if(samples, samples + count, IsBad, 0.0f);
    return bad;
}

}  // namespace

void ChannelBlock::Resize(uint32_t channelCount, uint32_t frames) {
    length = frames;
    samples.assign(static_cast<size_t>(channelCount) * frames, 0.0f);
    pointers.resize(channelCount);
    for (uint32_t c = 0; c < channelCount; ++c)
        pointers[c] = samples.data() + static_cast<size_t>(c) * frames;
}

void ChannelBlock::Clear() { std::fill(samples.begin(), samples.end(), 0.0f); }

uint64_t ChannelBlock::Take(const float* const* source, uint32_t from, uint32_t at,
                            uint32_t count) {
    uint64_t bad = 0;
    for (uint32_t c = 0; c < Channels(); ++c) {
        float* const target = pointers[c] + at;
        if (source == nullptr || source[c] == nullptr) {
            std::fill_n(target, count, 0.0f);
        } else {
            std::copy_n(source[c] + from, count, target);
            bad += CleanSamples(target, count);
        }
    }
    return bad;
}

void ChannelBlock::Give(float* const* target, uint32_t to, uint32_t at, uint32_t count) const {
    if (target == nullptr)
        return;
    for (uint32_t c = 0; c < Channels(); ++c) {
        if (target[c] != nullptr)
            std::copy_n(pointers[c] + at, count, target[c] + to);
    }
}

uint64_t ChannelBlock::Clean() {
    uint64_t bad = 0;
    for (float* channel : pointers)
        bad += CleanSamples(channel, length);
    return bad;
}

}  // namespace Quorvan::Host
