#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "host/parameters/PresentSettings.h"
#include "tools/render/Ramp.h"

namespace Quorvan::Tools {

/// A parameter write at a frame of the input, or a ramp from there on.
struct TimedWrite {
    uint64_t frame = 0;
    uint32_t index = 0;
    float position = 0.0f;  ///< at its end
    size_t point = 0;       ///< number of the automation's point that asks for it
    Ramp ramp = Ramp::Step;
    uint64_t frames = 0;  ///< length of the ramp, 0 for a step
    float from = 0.0f;    ///< position at the start of the ramp

    uint64_t End() const { return frame + frames; }
};

/// Where the parameters stand in the course of a render: at its start, and the writes in order of
/// their frames.
struct SettingsCourse {
    Host::PresentSettings start;
    std::vector<TimedWrite> writes;

    /// Where they stand behind the last write.
    Host::PresentSettings End() const {
        Host::PresentSettings end = start;
        for (const TimedWrite& write : writes)
            end.Put(write.index, write.position);
        return end;
    }
    /// Frame of the last change; 0 where there is none.
    uint64_t LastChange() const {
        uint64_t last = 0;
        for (const TimedWrite& write : writes)
            last = std::max(last, write.End());
        return last;
    }
};

}  // namespace Quorvan::Tools
