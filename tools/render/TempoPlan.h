#pragma once

#include <vector>

#include "tools/render/AutomationPoint.h"
#include "tools/render/TempoMap.h"

namespace Quorvan::Tools {

/// Puts the changes of tempo of an automation into a map that holds the start, in the order of
/// their moments: beats count in the tempo that those ahead of them have made. A ramp is a
/// staircase of steps of 10 ms, each at the ramp's mean over it, so that its beats come out
/// exactly.
class TempoPlan {
public:
    explicit TempoPlan(TempoMap start);

    /// points are tempos only.
    TempoMap Make(std::vector<const AutomationPoint*> points);

private:
    uint64_t FrameOf(const AutomationPoint& point) const;
    void Apply(const AutomationPoint& point, uint64_t frame);

    TempoMap map;
    uint64_t lastFrame = 0;  ///< of the last point
    double lastTempo;        ///< that it has led to
};

}  // namespace Quorvan::Tools
