#pragma once

#include <cmath>
#include <limits>
#include <random>

namespace Quorvan::dsp {

/// A draw between low and high, at most and at least 0, likeliest at 0: the triangular distribution
/// by inversion. One step of engine a draw; low is below high.
inline float TriangularDraw(std::mt19937& engine, float low, float high) {
    const float u = std::generate_canonical<float, std::numeric_limits<float>::digits>(engine);
    const float width = high - low;
    const float shareBelow = -low / width;
    return u >= shareBelow ? high - std::sqrt(width * (1.0f - u) * high)
                           : low + std::sqrt(width * u * -low);
}

}  // namespace Quorvan::dsp
