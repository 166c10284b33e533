#pragma once

#include <cmath>
#include <cstdint>

#include "host/engine/TailEstimator.h"

namespace Quorvan::Host {

/// What is this far down counts as over: 60 dB.
inline constexpr double kInaudible = 0.001;
/// A loop that keeps more than this of what goes round counts as one that loses nothing.
inline constexpr double kLossless = 0.999;

/// The fading of a loop that takes period seconds and keeps gain of what goes round.
inline Tail LoopTail(double period, double gain) {
    if (gain >= kLossless)
        return {0.0, true};
    if (gain <= kInaudible)
        return {period, false};
    return {period * (1.0 + std::log(kInaudible) / std::log(gain)), false};
}

inline double WholeNoteSeconds(double tempo) { return 240.0 / tempo; }

/// Factor of the choices Straight, Triplet and Dotted.
inline double NoteTypeFactor(uint32_t type) {
    return type == 1 ? 2.0 / 3.0 : type == 2 ? 1.5 : 1.0;
}
/// The same of Free, Straight, Triplet and Dotted.
inline double RateTypeFactor(uint32_t type) { return type == 0 ? 1.0 : NoteTypeFactor(type - 1); }

}  // namespace Quorvan::Host
