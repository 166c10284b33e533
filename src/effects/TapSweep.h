#pragma once

#include <cstdint>

namespace Quorvan::dsp {

/// How the taps of a pitch shifter sweep: a tap whose delay covers span seconds rate times a second
/// reads at a speed of 2^(semitones / 12). Small shifts keep a span of 30 ms; from there it grows,
/// so that the taps cross-fade less often than the pitch alone would have them do: 120 ms at 12
/// semitones, 240 ms at 24.
struct TapSweep {
    static constexpr uint32_t kMost = 16;  ///< shifts worked out at once

    /// One entry for each of count shifts.
    void Fill(const float* semitones, uint32_t count);

    float span[kMost];     ///< seconds
    float rate[kMost];     ///< hertz, with the sign of the shift
    float overlap[kMost];  ///< 0..0.5: share of a tap's way over which it fades in, and again out
};

}  // namespace Quorvan::dsp
