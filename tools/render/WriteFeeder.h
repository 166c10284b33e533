#pragma once

#include <cstdint>
#include <vector>

#include "host/engine/Engine.h"
#include "tools/render/SettingsCourse.h"

namespace Quorvan::Tools {

/// Hands the writes of a course to an engine as the render gets to them. A ramp becomes a write on
/// each block, and one at its end.
class WriteFeeder {
public:
    /// In order of their frames.
    explicit WriteFeeder(std::vector<TimedWrite> timed = {}) : writes(std::move(timed)) {}

    /// Queues all that falls on the frames from one on to another. Calls go on where the last one
    /// ended.
    void Feed(Host::Engine& engine, uint64_t from, uint64_t to);

private:
    void FeedRamp(Host::Engine& engine, const TimedWrite& ramp, uint64_t from, uint64_t to) const;

    std::vector<TimedWrite> writes;
    size_t next = 0;
    std::vector<TimedWrite> ramps;  ///< those under way
};

}  // namespace Quorvan::Tools
