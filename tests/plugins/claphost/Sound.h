#pragma once

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "clap/audio-buffer.h"
#include "plugins/claphost/ClapLibrary.h"

namespace Quorvan::ClapHost {

/// A main bus: one vector for each channel.
using Sound = std::vector<std::vector<float>>;

inline Sound Silence(size_t frames) { return Sound(2, std::vector<float>(frames)); }
inline Sound Noise(size_t frames, uint32_t seed = 1, float level = 0.25f) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> spread(-level, level);
    Sound sound = Silence(frames);
    for (auto& channel : sound)
        std::generate(channel.begin(), channel.end(), [&] { return spread(random); });
    return sound;
}
inline float Peak(const Sound& sound) {
    float peak = 0.0f;
    for (const auto& channel : sound)
        for (const float sample : channel)
            peak = std::max(peak, std::abs(sample));
    return peak;
}

/// The channels of a port in 32 or 64 bits.
template <class Sample>
struct Port {
    std::vector<std::vector<Sample>> channels;
    std::vector<Sample*> pointers;

    Port(Port&&) = default;  // a copy's pointers would be the other one's
    explicit Port(const Sound& content) {
        for (const auto& channel : content)
            channels.emplace_back(channel.begin(), channel.end());
        for (auto& channel : channels)
            pointers.push_back(channel.data());
    }
    clap_audio_buffer_t Buffer() {
        clap_audio_buffer_t buffer{};
        for (size_t c = 0; c < channels.size(); ++c)
            if (std::ranges::count(channels[c], channels[c].empty() ? 0 : channels[c][0]) ==
                std::ssize(channels[c]))
                buffer.constant_mask |= uint64_t{1} << c;
        if constexpr (sizeof(Sample) == 4)
            buffer.data32 = pointers.data();
        else
            buffer.data64 = pointers.data();
        buffer.channel_count = static_cast<uint32_t>(channels.size());
        return buffer;
    }
    Sound Content() const {
        Sound content;
        for (const auto& channel : channels)
            content.emplace_back(channel.begin(), channel.end());
        return content;
    }
    bool Holds(const Sound& content) const {
        const Sound own = Content();
        return std::equal(own.begin(), own.end(), content.begin(), [](auto& one, auto& other) {
            return one.empty() ||
                   std::memcmp(one.data(), other.data(), one.size() * sizeof(float)) == 0;
        });
    }
};

/// A channel whose bit is set has to hold one value; all is finite and not too loud.
inline void CheckOutput(const Sound& sound, uint64_t mask, float loudest) {
    for (size_t c = 0; c < sound.size(); ++c)
        for (const float sample : sound[c]) {
            if ((mask >> c & 1) != 0 && sample != sound[c][0])
                throw std::runtime_error("An output said to be constant is not.");
            if ((sample != 0.0f && !std::isnormal(sample)) || std::abs(sample) >= loudest)
                throw std::runtime_error("The output holds " + std::to_string(sample) + ".");
        }
}

}  // namespace Quorvan::ClapHost
