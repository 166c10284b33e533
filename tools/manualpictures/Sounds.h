#pragma once

#include <cmath>
#include <numbers>

#include "tools/audio/DemoSound.h"
#include "tools/manualpictures/Take.h"

namespace Quorvan::Tools {

/// What goes into the takes. All at Take::kRate, in stereo.
inline Planes Music(double seconds) { return MakeDemoSound(Take::kRate, seconds); }
inline Planes Silence(double seconds) { return {2, static_cast<size_t>(seconds * Take::kRate)}; }

/// A sine from one moment to another, 0 around it.
inline Planes Tone(double seconds, double hertz, double level, double from = 0.0,
                   double to = 1.0e9) {
    Planes sound = Silence(seconds);
    for (size_t i = 0; i < sound.Frames(); ++i) {
        const double time = static_cast<double>(i) / Take::kRate;
        if (time < from || time >= to)
            continue;
        const double wave = level * std::sin(2.0 * std::numbers::pi * hertz * (time - from));
        sound[0][i] = sound[1][i] = static_cast<float>(wave);
    }
    return sound;
}

}  // namespace Quorvan::Tools
