#pragma once

#include <cmath>

#include "primitives/PolynomialExp.h"

namespace Quorvan::dsp {

/// tanh without branches, table or call, for loops over blocks. Relative error below 8e-7.
inline float PolynomialTanh(float x) {
    const float t = PolynomialExpm1(-2.0f * std::abs(x));
    return std::copysign(t / (t + 2.0f), x);
}

}  // namespace Quorvan::dsp
