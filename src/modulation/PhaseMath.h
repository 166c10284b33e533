#pragma once

#include <cstdint>

// Rounding of positions in cycles by way of an integer: a few instructions on every machine, where
// the library's floor may be a call. Positions stay far inside the integer's range.
namespace Quorvan::dsp {

inline double Floor(double x) {
    const auto whole = static_cast<double>(static_cast<int64_t>(x));
    return whole > x ? whole - 1.0 : whole;
}

/// 0..1; exactly 1 for an x so little below a whole number that the difference rounds up.
inline double Frac(double x) { return x - Floor(x); }

/// Frac of a sum of phase, 1 and step. Nearly always between 1 and 2, where a subtraction does it.
inline double FracBehindOne(double x) { return x >= 1.0 && x < 2.0 ? x - 1.0 : Frac(x); }

/// Frac of a sum of phase and step, nearly always between 0 and 1.
inline double FracBehindZero(double x) { return x >= 0.0 && x < 1.0 ? x : Frac(x); }

/// Whether the whole parts of two positions differ.
inline bool Crosses(double from, double to) {
    return static_cast<int64_t>(from) != static_cast<int64_t>(to);
}

}  // namespace Quorvan::dsp
