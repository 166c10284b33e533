#include "host/engine/GrainReporter.h"

#include <cmath>

namespace Quorvan::Host {

namespace {

GrainStart Describe(const dsp::Grain& grain, uint64_t firstFrame) {
    const auto increment = static_cast<float>(grain.increment);
    const float speed = std::abs(increment);
    // Pan gains run from 0 to 2, and those of the outputs are twice what the distance leaves.
    GrainStart start;
    start.frame = firstFrame + grain.startFrame;
    start.right = grain.outGainRight != 0.0f;
    start.tapePosition = grain.startPosition;
    start.tapeLength = grain.wrapLength;
    start.sourceFrames = grain.length;
    start.durationFrames = speed > 0.0f ? grain.length / speed : 0.0f;
    start.increment = increment;
    start.semitones = speed > 0.0f ? 12.0f * std::log2(speed) : 0.0f;
    start.pan = 0.5f * grain.panGainRight;
    start.gain = 0.5f * (grain.outGainLeft + grain.outGainRight);
    start.shape = grain.shape;
    start.reversed = grain.reversed;
    return start;
}

}  // namespace

void GrainReporter::OnGrainStart(const dsp::Grain& grain) {
    if (listeners.empty())
        return;
    const GrainStart start = Describe(grain, firstFrame);
    for (EngineListener* listener : listeners)
        listener->OnGrainStart(start);
}

}  // namespace Quorvan::Host
