#pragma once

#include <cstdint>
#include <limits>

namespace Quorvan::dsp {

/// Static curve of a compressor: from the level of the detector to a gain in decibels, with a soft
/// knee around the threshold.
class CompressionCurve {
public:
    CompressionCurve() = default;
    /// slope is the rise of the output above the threshold, 1 / ratio; threshold and knee in dB.
    CompressionCurve(float thresholdDb, float slope, float kneeDb);

    /// Whether it was made of these.
    bool Is(float thresholdDb, float slope, float kneeDb) const {
        return thresholdDb == threshold && slope - 1.0f == slopeMinusOne && kneeDb == knee;
    }
    /// Whether the gain is 0 dB at all of count levels. Without a jump in the loop, so that it runs
    /// in vectors.
    bool LeavesAll(const float* levels, uint32_t count) const {
        uint32_t reached = 0;
        for (uint32_t i = 0; i < count; ++i)
            reached += levels[i] < quietLevel ? 0 : 1;
        return reached == 0;
    }
    /// Turns count linear levels into gains in dB, at or below 0 for slopes below 1.
    void LevelsToGainsDb(float* values, uint32_t count) const;
    /// The makeup for a signal at 0 dB: its gain reduction over the square root of 2, as a linear
    /// gain.
    float MakeupGain() const;

private:
    static constexpr float kDecibelsPerNeper = 8.685889f;
    static constexpr float kFloorLevel = 1.0e-7f;
    static constexpr float kFloorDb = -140.0f;
    /// Levels whose logarithms are taken, or left out, together.
    static constexpr uint32_t kGroup = 8;

    float GainDb(float level, float db) const;

    float threshold = std::numeric_limits<float>::quiet_NaN();
    float slopeMinusOne = 0.0f;
    float knee = 0.0f;
    bool kneeIsZero = true;
    float kneeScale = 0.0f;  ///< 0.5 / knee
    /// A level that is below the knee beyond all rounding of the logarithm: no need to take it.
    float quietLevel = 0.0f;
};

}  // namespace Quorvan::dsp
