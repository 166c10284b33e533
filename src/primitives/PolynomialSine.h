#pragma once

#include <cmath>

// The sine without branches, table or call, so that loops over blocks become vector code. Angles
// are in turns.
namespace Quorvan::dsp {

/// sin(2 pi a) for a in -0.25..0.25, absolute error below 2e-7; exact at 0 and at the ends.
inline float PolynomialSineOfQuarter(float a) {
    // Odd, fitted at Chebyshev points of the square.
    const float s = a * a;
    float p = 39.7598267f;
    p = p * s - 76.5811691f;
    p = p * s + 81.602478f;
    p = p * s - 41.3416824f;
    p = p * s + 6.28318548f;
    return p * a;
}

/// sin(2 pi turns) for turns in 0..1, absolute error below 3e-7.
inline float PolynomialSineOfTurn(float turns) {
    // The phase as a triangle: where it falls, the sine goes back the way it came.
    return PolynomialSineOfQuarter(std::abs(0.5f - std::abs(turns - 0.25f)) - 0.25f);
}

}  // namespace Quorvan::dsp
