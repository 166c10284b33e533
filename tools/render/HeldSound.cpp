#include "tools/render/HeldSound.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Quorvan::Tools {

void HeldSound::Add(const SoundPiece& piece, size_t from) {
    sound.resize(piece.channelCount);
    const size_t count = piece.frames - from;
    const auto isZero = [](float sample) { return sample == 0.0f; };
    const bool silent =
        std::all_of(piece.channels, piece.channels + piece.channelCount, [&](const float* channel) {
            return std::all_of(channel + from, channel + piece.frames, isZero);
        });
    if (silent) {
        zeros += count;
        return;
    }
    Store();
    for (uint32_t c = 0; c < piece.channelCount; ++c)
        sound[c].insert(sound[c].end(), piece.channels[c] + from, piece.channels[c] + piece.frames);
    stored += count;
}

void HeldSound::Store() {
    stored += zeros;
    zeros = 0;
    for (std::vector<float>& channel : sound)
        channel.resize(stored, 0.0f);
}

void HeldSound::FadeOut(uint64_t frames) {
    Store();
    const uint64_t count = std::min(frames, stored);
    for (uint64_t i = 0; i < count; ++i) {
        const double place = static_cast<double>(i + 1) / static_cast<double>(count);
        const auto gain = static_cast<float>(0.5 + 0.5 * std::cos(std::numbers::pi * place));
        for (std::vector<float>& channel : sound)
            channel[stored - count + i] *= gain;
    }
}

void HeldSound::Clear() {
    for (std::vector<float>& channel : sound)
        channel.clear();
    stored = 0;
    zeros = 0;
}

}  // namespace Quorvan::Tools
