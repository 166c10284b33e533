#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

namespace Quorvan::dsp {

/// Every length of a plate's tank, by place: eight all-passes, four delay lines, seven taps a side.
struct TankLengths {
    static constexpr uint32_t kAllpasses = 8, kLines = 4, kTaps = 7;
    static constexpr uint32_t kFirstLine = kAllpasses;
    static constexpr uint32_t kFirstTap = kFirstLine + kLines;  ///< left ones, then right ones
    static constexpr uint32_t kCount = kFirstTap + 2 * kTaps;

    /// Hertz, the rate that the lengths are given for, and its reciprocal.
    static constexpr float kReferenceRate = 29761.0f;
    static constexpr float kPerReferenceRate = 3.360102e-05f;

    /// Samples at the reference rate. The second all-pass is 300 samples longer than in the
    /// published plate.
    static constexpr std::array<float, kCount> kBase = {
        142,  407,  379,  277,                    // all-passes ahead of the branches
        908,  2656, 672,  1800,                   // all-passes of the branches
        4217, 3163, 4453, 3720,                   // lines
        266,  2974, 1913, 1996, 1990, 187, 1066,  // left taps
        353,  3627, 1228, 2673, 2111, 335, 121};  // right taps

    /// The length of a place at a scale, with its fraction.
    static float At(uint32_t place, float scale) {
        const float length = kBase[place] * scale;
        return place < kAllpasses ? std::max(length, 1.0f) : length;
    }
    void Update(float scale) {
        for (uint32_t place = 0; place < kCount; ++place)
            whole[place] = static_cast<int32_t>(At(place, scale));
    }

    std::array<int32_t, kCount> whole{};  ///< samples
};

}  // namespace Quorvan::dsp
