#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Quorvan::dsp {

/// Speed wobble of a tape drive: a fundamental of the capstan with ten overtones, and a slower one
/// of a reel with eight, at a seventh of its frequency. A short delay, which takes a fast tape,
/// flutters fast and little; a long one slowly and far.
class TapeFlutter {
public:
    /// Frequency and depth for a delay.
    struct Setting {
        /// delayMs: 60..1000.
        explicit Setting(float delayMs);
        /// Gain on the wobble, for the delay of a moment near delayMs, likewise 60..1000.
        float Depth(float momentMs) const { return momentMs * depthSlope + depthOffset; }

        float frequency;  ///< hertz
        float depthSlope, depthOffset;
    };

    void Setup(float rate) { inverseSampleRate = 1.0f / rate; }
    /// New phases, drawn from randomState.
    void Reset(uint32_t& randomState);
    /// Lets all phases move on by count samples and answers the wobble there.
    float Advance(float frequency, uint32_t count);

private:
    /// Sines at the multiples of a frequency.
    template <size_t kSize>
    struct Bank {
        void Draw(uint32_t& randomState);
        float Advance(float frequency, float inverseRate, uint32_t count);

        std::array<float, kSize> amplitude{};
        std::array<float, kSize> phase{};  ///< radians
    };

    float inverseSampleRate = 0.0f;
    Bank<11> fast;
    Bank<9> slow;
};

}  // namespace Quorvan::dsp
