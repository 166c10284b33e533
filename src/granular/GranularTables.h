#pragma once

#include <array>
#include <cstdint>
#include <span>

/// Value tables of the granular engine. Note lengths are in whole notes.
namespace Quorvan::dsp {

inline constexpr std::array<float, 7> kSyncedSizes{0.015625f, 0.03125f, 0.0625f, 0.125f,
                                                   0.25f,     0.5f,     1.0f};
/// Grain size as a multiple of the trigger period.
inline constexpr std::array<float, 7> kSizeRatios{0.0625f, 0.125f, 0.25f, 0.5f, 1.0f, 2.0f, 4.0f};
inline constexpr std::array<uint32_t, 10> kGrainLimits{3, 4, 6, 8, 12, 16, 32, 64, 128, 256};
inline constexpr std::array<float, 7> kBufferLengths{0.125f, 0.25f, 0.5f, 1.0f, 1.5f, 2.0f, 4.0f};
inline constexpr std::array<float, 8> kSyncedOffsets{0.0000001f, 0.0078125f, 0.015625f, 0.03125f,
                                                     0.0625f,    0.125f,     0.25f,     0.5f};
/// Cells in one loop.
inline constexpr std::array<uint32_t, 3> kGridSizes{8, 16, 32};
/// Grains that overlap at one time.
inline constexpr std::array<float, 6> kTextureLayers{1.0f, 2.0f, 4.0f, 8.0f, 16.0f, 32.0f};
/// Trigger multipliers of the step sequencer.
inline constexpr std::array<float, 3> kStepValues{1.0f, 2.0f, 3.0f};

/// Count note lengths, each half the one before, from a whole note down.
template <uint32_t Count>
constexpr std::array<float, Count> HalvingRates() {
    std::array<float, Count> rates{};
    float rate = 1.0f;
    for (float& entry : rates) {
        entry = rate;
        rate *= 0.5f;
    }
    return rates;
}

/// Synced rates of the main clock, the song clock and the sequencer.
inline constexpr auto kMainRates = HalvingRates<9>();
/// Synced rates of the texture clock.
inline constexpr auto kTextureRates = HalvingRates<12>();
/// Entry of kMainRates that the song clock runs at: it counts sixty-fourth notes.
inline constexpr uint32_t kSongClockRate = 6;

inline constexpr float kTripletFactor = 0.6666667f;
inline constexpr float kDottedFactor = 1.5f;

/// Factor of a time type: 2 is triplet, 3 dotted, anything else straight.
constexpr float TimeTypeFactor(int32_t type) {
    return type == 2 ? kTripletFactor : type == 3 ? kDottedFactor : 1.0f;
}

inline constexpr uint32_t kScaleCount = 15;

/// Semitone offsets that a scale allows, ascending from -36 to 36; empty for scale 0, which does
/// not quantise.
std::span<const float> ScaleSemitones(uint32_t scale);

}  // namespace Quorvan::dsp
