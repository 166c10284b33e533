#pragma once

#include "tools/audio/Planes.h"

namespace Quorvan::Tools {

/// Tempo of the demo sound, in beats per minute. A bar has four beats.
inline constexpr double kDemoTempo = 120.0;
/// Four bars, after which it starts again.
inline constexpr double kDemoSeconds = 8.0;

/// A piece of music for trying sounds out, in stereo: plucked strings, a soft chord for each bar
/// and a light beat. The same for the same rate and length on every run. Peak at -3 dB.
///
/// Method  strings: K. Karplus, A. Strong, "Digital Synthesis of Plucked-String and Drum Timbres"
///         (1983); chords: a few sine partials, detuned from side to side; drums: swept sine and
///         noise.
Planes MakeDemoSound(double rate, double seconds);

}  // namespace Quorvan::Tools
