#pragma once

#include <algorithm>

#include "host/engine/GrainStart.h"

namespace Quorvan::Tools {

/// Calls stroke(seconds, place, laterSeconds, laterPlace), all in seconds, for each straight piece
/// of a grain's way over the tape. One that runs over an end of the tape goes on at the other.
template <class Stroke>
void ForEachStroke(const Host::GrainStart& grain, double rate, Stroke&& stroke) {
    const double tape = static_cast<double>(grain.tapeLength) / rate;
    double from = static_cast<double>(grain.tapePosition) / rate;
    double seconds = static_cast<double>(grain.frame) / rate;
    const double duration = static_cast<double>(grain.durationFrames) / rate;
    double rest = static_cast<double>(grain.sourceFrames) / rate;
    const double speed = duration > 0.0 ? rest / duration : 1.0;
    const double direction = grain.reversed ? -1.0 : 1.0;
    for (int lap = 0; lap < 16 && rest > 0.0; ++lap) {
        const double room = grain.reversed ? from : tape - from;
        const double length = tape > 0.0 ? std::min(rest, std::max(room, 0.0)) : rest;
        const double end = seconds + length / speed;
        stroke(seconds, from, end, from + direction * length);
        seconds = end;
        rest -= length;
        from = grain.reversed ? tape : 0.0;
    }
}

/// How loud a grain is on its side, 0..1.
inline double SideLevel(const Host::GrainStart& grain) {
    const double pan = static_cast<double>(grain.pan);
    const double share = std::min(1.0, 2.0 * (grain.right ? pan : 1.0 - pan));
    return share * std::min(1.0, static_cast<double>(grain.gain));
}

}  // namespace Quorvan::Tools
