#pragma once

#include <cstdint>

namespace Quorvan::Host {

/// "MoteWeaver_Pitch" while "MoteWeaver_Scale" chooses a scale: its position steps through the
/// semitones that the scale allows.
class PitchScale {
public:
    /// The choice that a position of "MoteWeaver_Scale" makes; 0 is no scale.
    static uint32_t ScaleAt(float position);

    /// scale is from 1 on; one beyond the last counts as the last.
    explicit PitchScale(uint32_t scale);
    double SemitonesAt(float position) const;
    /// Position of the allowed pitch next to semitones.
    float PositionOf(double semitones) const;

private:
    uint32_t scale;
};

}  // namespace Quorvan::Host
