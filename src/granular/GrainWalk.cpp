#include "granular/GrainWalk.h"

namespace Quorvan::dsp {

void GrainWalk::Setup(uint32_t blockSize) { positions.assign(size_t{blockSize + 1} * kHeads, 0.0); }

void GrainWalk::BeginBlock(uint32_t frames) {
    numFrames = frames;
    walked = taken = 0;
}

const GrainWalk::Path& GrainWalk::Next(const GrainPool& pool, uint16_t slot,
                                       const GrainRuns& runs) {
    if (taken == walked)
        WalkFrom(pool, slot, runs);
    return paths[taken++];
}

/// Walks the grain and as many of those behind it as there is room for.
void GrainWalk::WalkFrom(const GrainPool& pool, uint16_t slot, const GrainRuns& runs) {
    const double loop = static_cast<double>(runs.Loop());
    heads = walked = taken = 0;
    for (; slot < pool.Capacity(); slot = pool.Next(slot)) {
        const Grain& grain = pool[slot];
        if (!runs.NeedsPath(grain))
            continue;
        const double wrappedEnd = static_cast<double>(grain.wrapLength);
        // In a loop that keeps its length the two positions are the same.
        const bool together = grain.readPosition == grain.wrappedPosition && wrappedEnd == loop;
        if (heads + (together ? 1u : 2u) > kHeads)
            break;
        const uint32_t read = AddHead(grain.readPosition, grain.increment, loop);
        const uint32_t second =
            together ? read : AddHead(grain.wrappedPosition, grain.increment, wrappedEnd);
        paths[walked++] = {positions.data() + read, positions.data() + second};
    }
    while (heads < kHeads)
        AddHead(0.5, 0.0, 1.0);
    kernels->walk({position.data(), increment.data(), wrap.data()}, numFrames, positions.data());
}

uint32_t GrainWalk::AddHead(double at, double step, double end) {
    position[heads] = at;
    increment[heads] = step;
    wrap[heads] = end;
    return heads++;
}

}  // namespace Quorvan::dsp
