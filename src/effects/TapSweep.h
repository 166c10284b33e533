#pragma once

namespace Quorvan::dsp {

/// How the taps of a pitch shifter sweep: a tap whose delay covers span seconds rate times a second
/// reads at a speed of 2^(semitones / 12). Small shifts keep a span of 30 ms; from there it grows,
/// so that the taps cross-fade less often than the pitch alone would have them do: 120 ms at 12
/// semitones, 240 ms at 24.
struct TapSweep {
    explicit TapSweep(float semitones);

    float span;     ///< seconds
    float rate;     ///< hertz, with the sign of the shift
    float overlap;  ///< 0..0.5: share of a tap's way over which it fades in, and again fades out
};

}  // namespace Quorvan::dsp
