#pragma once

#include <cstdint>

namespace Quorvan::dsp {

/// Loops that look for the ends of a row of samples, in the widest vectors that are worth it. What
/// is no number is passed over, and every set finds the same.
struct LevelKernels {
    /// Places beside each other that a row's sizes are kept in.
    static constexpr uint32_t kHeld = 16;

    /// Of two rows of count samples. held, kHeld numbers for the one and kHeld for the other on a
    /// 64-byte boundary: each becomes the largest size of those that have come by its place.
    void (*peaks)(const float* left, const float* right, uint32_t count, float* held);
    /// Largest size of count samples; 0 where there are none.
    float (*size)(const float* samples, uint32_t count);
    /// Lowest and highest of count samples, from 1.
    void (*extremes)(const float* samples, uint32_t count, float& lowest, float& highest);

    /// Those of this machine.
    static const LevelKernels& Best();
    /// Those that every machine can run.
    static const LevelKernels& Plain();
};

}  // namespace Quorvan::dsp
