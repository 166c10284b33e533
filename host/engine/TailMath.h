#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "host/engine/TailEstimator.h"

namespace Quorvan::Host {

/// What is this far down counts as over: 90 dB.
inline constexpr double kInaudible = 3.1622777e-5;
/// A loop that keeps more than this of what goes round counts as one that loses nothing.
inline constexpr double kLossless = 0.999;

/// Of something that holds its sound.
inline Tail HeldTail() { return {0.0, true, std::numeric_limits<double>::infinity()}; }

/// The fading of a loop that takes period seconds and keeps gain of what goes round, until silence
/// of it is left.
inline Tail LoopTail(double period, double gain, double silence) {
    if (!(gain < kLossless))
        return {0.0, true, period};
    if (gain <= silence)
        return {period, false, period};
    return {period * (1.0 + std::log(silence) / std::log(gain)), false, period};
}

/// Tails of stages that follow each other.
inline Tail operator+(const Tail& one, const Tail& other) {
    return {one.seconds + other.seconds, one.endless || other.endless, one.memory + other.memory};
}

inline double DecibelGain(double decibels) { return std::pow(10.0, 0.05 * decibels); }

inline double WholeNoteSeconds(double tempo) { return 240.0 / tempo; }

/// Factor of the choices Straight, Triplet and Dotted.
inline double NoteTypeFactor(uint32_t type) {
    return type == 1 ? 2.0 / 3.0 : type == 2 ? 1.5 : 1.0;
}
/// The same of Free, Straight, Triplet and Dotted.
inline double RateTypeFactor(uint32_t type) { return type == 0 ? 1.0 : NoteTypeFactor(type - 1); }

}  // namespace Quorvan::Host
