#pragma once

#include <cstdint>

namespace Quorvan::prims {

/// Turns a 32-bit draw into a number in 0..1: 2^-32.
inline constexpr float kXorshiftScale = 2.3283064e-10f;

/// Moves a random state on by one step and answers it: G. Marsaglia, "Xorshift RNGs" (2003), with
/// the shifts 13, 17, 5. A state of 0 never leaves 0.
inline uint32_t XorshiftStep(uint32_t& state) {
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return state;
}

/// The next draw as a number in 0..1.
inline float XorshiftUniform(uint32_t& state) {
    return static_cast<float>(XorshiftStep(state)) * kXorshiftScale;
}

}  // namespace Quorvan::prims
