#pragma once

#include <cstdint>

#include "support/ModuleRig.h"
#include "support/TestSignals.h"

namespace Quorvan::test {

/// Blocks of about a millisecond, as the processor makes them.
inline uint32_t BlockOf(float rate) { return static_cast<uint32_t>(rate * 0.001f) / 4 * 4; }

/// Block by block noise, clicks in silence, and a sine beside a constant, each for 200 blocks.
inline Stereo SignalOfBlock(uint32_t number, uint32_t length, float rate) {
    const uint32_t kind = number / 200 % 3;
    if (kind == 0)
        return {Noise(number, length, 0.8f), Noise(number + 100000, length, 0.8f)};
    if (kind == 1) {
        Stereo clicks{Channel(length), Channel(length)};
        clicks[number % 2][number % length] = number % 10 == 0 ? 1.0f : 0.0f;
        return clicks;
    }
    return {Sine(997.0, static_cast<double>(rate), length, 0.7f), Channel(length, 0.3f)};
}

}  // namespace Quorvan::test
