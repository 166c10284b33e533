#pragma once

#include <cmath>
#include <cstdint>

#include "primitives/FastMath.h"

namespace Quorvan::dsp {

/// The parabola of FastSin with a second one on top that takes most of its error away, for a in
/// -pi..pi. Absolute error below 0.0011. Its exact form is part of the sound.
inline float RefinedSin(float a) {
    const float y = FastSin(a);
    return (std::abs(y) * y - y) * 0.225f + y;
}

/// An angle of 0..2 pi as one that RefinedSin takes: less a turn above half a turn. Put as a
/// product, so that the compiler makes no branch of it and loops become vector code.
inline float HalfTurnAround(float a) {
    const auto over = static_cast<int32_t>(a > 3.1415927f);
    return a - static_cast<float>(over) * 6.2831855f;
}

/// The same for a phase in turns, at or above 0.
inline float RefinedSinOfTurn(float turns) {
    const float whole = static_cast<float>(static_cast<int32_t>(turns));
    return RefinedSin(HalfTurnAround((turns - whole) * 6.2831855f));
}

}  // namespace Quorvan::dsp
