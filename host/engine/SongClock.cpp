#include "host/engine/SongClock.h"

#include <algorithm>
#include <cmath>

namespace Quorvan::Host {

namespace {

// The loop of the processor needs a length of at least one frame, and a tempo that it can divide
// by.
constexpr double kSlowest = 1.0;
constexpr double kFastest = 999.0;
constexpr double kSamePlace = 0.001;  // frames

}  // namespace

void SongClock::Prepare(double rate, uint64_t presentFrame) {
    anchor = At(presentFrame);
    anchorFrame = 0;
    sampleRate = rate;
}

void SongClock::Set(uint64_t frame, const Transport& place) {
    const Transport present = At(frame);
    Transport wanted = place;
    wanted.tempo =
        std::isfinite(place.tempo) ? std::clamp(place.tempo, kSlowest, kFastest) : present.tempo;
    if (!std::isfinite(place.beat))
        wanted.beat = present.beat;
    if (Agrees(frame, wanted))
        return;
    anchor = wanted;
    anchorFrame = frame;
}

Transport SongClock::At(uint64_t frame) const {
    Transport place = anchor;
    if (anchor.playing)
        place.beat += static_cast<double>(frame - anchorFrame) * BeatsPerFrame();
    return place;
}

bool SongClock::Agrees(uint64_t frame, const Transport& place) const {
    return place.tempo == anchor.tempo && place.playing == anchor.playing &&
           std::abs(place.beat - At(frame).beat) <= kSamePlace * BeatsPerFrame();
}

}  // namespace Quorvan::Host
