#pragma once

#include <cmath>
#include <cstdint>

#include "granular/Grain.h"

namespace Quorvan::dsp {

/// Part of x above the whole number below it. The library's floor would be a call.
inline double FractionOf(double x) {
    const double part = x - static_cast<double>(static_cast<int64_t>(x));
    return part < 0.0 ? part + 1.0 : part;
}

/// Loops x into 0..wrap. The roundings are part of the sound.
inline double WrapPosition(double x, double wrap) {
    const double turns = (x <= 0.0 ? x + wrap : x) / wrap;
    return (turns >= 0.0 && turns < 1.0 ? turns : FractionOf(turns)) * wrap;
}

/// Moves both read heads of a grain on, on a tape that loops at the end.
inline void MoveOn(Grain& grain, double end, double way) {
    const double read = grain.readPosition;
    const double second = grain.wrappedPosition;
    grain.readPosition = WrapPosition(read + way, end);
    grain.wrappedPosition = second == read && grain.wrapLength == end
                                ? grain.readPosition
                                : WrapPosition(second + way, grain.wrapLength);
    grain.elapsed += std::abs(way);
}

/// The same by count samples, on a tape of loop samples.
inline void Advance(Grain& grain, uint32_t loop, uint32_t count) {
    MoveOn(grain, loop, grain.increment * count);
}

}  // namespace Quorvan::dsp
