#pragma once

#include <cstdint>

#include "tools/picture/Axis.h"
#include "tools/picture/Waveform.h"

namespace Quorvan::Tools {

/// How outlines show levels.
enum class LevelForm : uint8_t {
    Auto,    ///< in decibels where the sound is quiet, else linear
    Linear,  ///< samples, up and down
    Decibels
};

/// The upright axis of outlines.
struct LevelScale {
    bool inDecibels = false;
    Axis axis;

    /// The round one that fits both outlines. Quiet is an effective level below -36 dB of either.
    static LevelScale For(const Waveform& a, const Waveform& b, LevelForm form);
};

/// In dB, not below floor.
double LevelDecibels(double level, double floor);

}  // namespace Quorvan::Tools
