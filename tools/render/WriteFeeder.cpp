#include "tools/render/WriteFeeder.h"

#include <algorithm>

namespace Quorvan::Tools {

void WriteFeeder::Feed(Host::Engine& engine, uint64_t from, uint64_t to) {
    // Ramps first: what is written at the end of one at the same frame comes behind it.
    for (const TimedWrite& ramp : ramps)
        FeedRamp(engine, ramp, from, to);
    std::erase_if(ramps, [to](const TimedWrite& ramp) { return ramp.End() < to; });
    for (; next < writes.size() && writes[next].frame < to; ++next) {
        const TimedWrite& write = writes[next];
        if (write.frames == 0) {
            engine.WriteAt(write.frame, write.index, write.position);
            continue;
        }
        FeedRamp(engine, write, write.frame + 1, to);
        if (write.End() >= to)
            ramps.push_back(write);
    }
}

void WriteFeeder::FeedRamp(Host::Engine& engine, const TimedWrite& ramp, uint64_t from,
                           uint64_t to) const {
    const uint64_t block = engine.BlockFrames();
    const auto length = static_cast<double>(ramp.frames);
    for (uint64_t at = (from + block - 1) / block * block; at < std::min(to, ramp.End());
         at += block) {
        const double share = static_cast<double>(at - ramp.frame) / length;
        const double place = RampValue(ramp.ramp, static_cast<double>(ramp.from),
                                       static_cast<double>(ramp.position), share);
        engine.WriteAt(at, ramp.index, static_cast<float>(place));
    }
    if (ramp.End() >= from && ramp.End() < to)
        engine.WriteAt(ramp.End(), ramp.index, ramp.position);
}

}  // namespace Quorvan::Tools
