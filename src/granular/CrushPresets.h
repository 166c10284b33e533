#pragma once

#include <array>
#include <cstdint>

namespace Quorvan::dsp {

/// What one value of "BitCrushPreset" does to the sum of the grains.
struct CrushPreset {
    enum class Effect : uint8_t { kNone, kLogQuantizer, kBitCrusher };

    Effect effect = Effect::kNone;
    float inGain = 1.0f;       ///< linear, taken off again behind the effect
    float bitDepth = 0.0f;     ///< bits, for the bit crusher
    float downsample = 0.0f;   ///< divisor of the sample rate at 44100 Hz, for the bit crusher
    bool interpolates = true;  ///< false: grains read the tape without interpolation
};

inline constexpr std::array<CrushPreset, 6> kCrushPresets = {{
    {},
    {.interpolates = false},
    {.effect = CrushPreset::Effect::kLogQuantizer, .inGain = 1.0f},
    {.effect = CrushPreset::Effect::kLogQuantizer, .inGain = 0.16788038f},  // -15.5 dB
    {.effect = CrushPreset::Effect::kBitCrusher,                            // -12.5 dB
     .inGain = 0.23713738f,
     .bitDepth = 12.1f,
     .downsample = 6.0f},
    {.effect = CrushPreset::Effect::kBitCrusher,  // -12 dB
     .inGain = 0.25118864f,
     .bitDepth = 10.6f,
     .downsample = 4.0f},
}};

}  // namespace Quorvan::dsp
