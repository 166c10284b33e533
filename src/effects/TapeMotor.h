#pragma once

#include "effects/SpaceEchoSmootherLPFDouble.h"

namespace Quorvan::dsp {

/// Inertia of a tape drive: the delay between the heads follows what is asked for in 2 s where it
/// grows and in 1 s where it shrinks.
class TapeMotor {
public:
    void Setup(float rate);
    /// Stands at a delay at once.
    void Jump(float samples);
    /// One sample's way towards target, a delay in samples; answers the delay reached.
    float Step(float target) {
        if (target > now)
            Follow(rise, fall, target);
        else if (target < now)
            Follow(fall, rise, target);
        return now;
    }
    float Now() const { return now; }

private:
    void Follow(SpaceEchoSmootherLPFDouble& moving, SpaceEchoSmootherLPFDouble& resting,
                float target);

    SpaceEchoSmootherLPFDouble rise, fall;  // samples
    float now = 0.0f;                       ///< samples
};

}  // namespace Quorvan::dsp
