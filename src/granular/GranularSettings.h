#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace Quorvan::dsp {

/// Switches and enumerations of the granular module as its last control step has read them.
struct GranularSettings {
    enum Mode : int32_t { kClassic = 0, kTexture = 1, kBeat = 2 };

    int32_t granularMode = kClassic;
    int32_t scale = 0;
    std::span<const float> scaleTable;  ///< semitones; empty where scale is 0
    int32_t randomPitchArrow = 0;       ///< 0 up, 1 down, 2 both
    int32_t randomSizeArrow = 0;        ///< 0 shorter, 1 longer, 2 both
    int32_t randomDensityArrow = 0;     ///< 0 jitter of the rate, 1 chance of skipping
    int32_t randomLayersArrow = 0;      ///< 0 more, 1 fewer, 2 both
    int32_t sprayDirection = 0;         ///< 0 backward, 1 forward, 2 both
    int32_t grainSizeMode = 0;          ///< 0 absolute, 1 straight, 2 triplet, 3 dotted
    bool densitySizeLink = false;
    bool textureSizeMidiSync = false;
    int32_t shape = 0;
    int32_t triggerMode = 0;  ///< 1: the clock is gated by "GrainTrigger"
    bool crossfade = false;
    bool spatializerEnabled = false;
    bool randomWalk = false;
    float randomDistance = 0.0f;
    float distanceRange = 0.0f;
    uint32_t grainLimit = 0;  ///< single grains
    uint32_t gridSize = 8;    ///< cells in one loop
};

/// Parameters that the grain decision reads once a sample.
enum class Curve : uint32_t {
    Pitch,
    RandomPitch,
    ShapeParam,
    GrainSizeAbsolute,
    GrainSizeRatio,
    GrainSizeSynced,
    TextureSizeAbsolute,
    TextureSizeSynced,
    TextureDensity,
    RandomLayers,
    RandomSize,
    RandomDensity,
    RandomDirection,
    RandomPan,
    Width,
    Spray,
    GrainTrigger,
    RandomFine,
    ManualScanPosition,
    Count
};

/// One block-long buffer of physical values for each of them.
struct BlockCurves {
    float* operator[](Curve curve) const { return rows[static_cast<size_t>(curve)]; }
    float At(Curve curve, uint32_t n) const { return rows[static_cast<size_t>(curve)][n]; }

    std::array<float*, static_cast<size_t>(Curve::Count)> rows{};
};

/// The gate output: a pulse of fixed length at each grain start or at each transient.
struct GatePulse {
    enum Selection : int32_t { kOff = 0, kGrains = 1, kTransients = 2 };

    /// Starts a pulse if source is what the pulses follow and none is running.
    void Trigger(Selection source) {
        if (!on && selection == source) {
            on = true;
            counter = 0;
        }
    }
    /// Moves on by one block.
    void Advance(uint32_t frames) {
        if (!on)
            return;
        counter += frames;
        if (counter > length)
            on = false;
    }
    void Reset() {
        on = false;
        counter = 0;
    }

    bool on = false;
    uint32_t length = 0;  ///< samples
    uint32_t counter = 0;
    int32_t selection = kOff;
};

}  // namespace Quorvan::dsp
