#pragma once

// The parts of the standard library that signals, tables and plain models are made of.
#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <numbers>
#include <optional>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace Quorvan::test {

/// Random numbers for jumping settings.
class Dice {
public:
    explicit Dice(double seed) : random(static_cast<uint32_t>(seed)) {}
    float Between(float from, float to) {
        return std::uniform_real_distribution<float>(from, to)(random);
    }
    float Unit() { return Between(0.0f, 1.0f); }
    bool Chance(float share) { return Unit() < share; }
    uint32_t Below(uint32_t count) { return static_cast<uint32_t>(random() % count); }

protected:
    std::mt19937 random;
};

/// White noise in -amplitude..amplitude.
inline std::vector<float> Noise(uint32_t seed, size_t length, float amplitude = 1.0f) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> draw(-amplitude, amplitude);
    std::vector<float> signal(length);
    for (float& sample : signal)
        sample = draw(random);
    return signal;
}

/// A sine from phase 0.
inline std::vector<float> Sine(double frequency, double rate, size_t length,
                               float amplitude = 1.0f) {
    std::vector<float> signal(length);
    for (size_t i = 0; i < length; ++i)
        signal[i] = amplitude * static_cast<float>(std::sin(2.0 * std::numbers::pi * frequency /
                                                            rate * static_cast<double>(i)));
    return signal;
}

/// Noise whose loudness changes by up to 40 dB every few milliseconds, with stretches of silence.
inline std::vector<float> Bursts(uint32_t seed, size_t length, float peak) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> draw(0.0f, 1.0f);
    std::vector<float> signal = Noise(seed + 1, length);
    for (size_t at = 0; at < length;) {
        const float gain =
            draw(random) < 0.2f ? 0.0f : peak * std::pow(10.0f, -2.0f * draw(random));
        const auto end = std::min(length, at + 20 + static_cast<size_t>(draw(random) * 400.0f));
        for (; at < end; ++at)
            signal[at] *= gain;
    }
    return signal;
}

inline float PeakLevel(const std::vector<float>& signal, size_t from = 0, size_t to = SIZE_MAX) {
    float peak = 0.0f;
    for (size_t i = from; i < std::min(to, signal.size()); ++i)
        peak = std::max(peak, std::abs(signal[i]));
    return peak;
}

inline float DecibelsOf(float gain) { return 20.0f * std::log10(gain); }

}  // namespace Quorvan::test
