#pragma once

#include <cstdint>

#include "host/engine/Transport.h"

namespace Quorvan::Host {

/// The song position at any frame: the last place that somebody set, run on by the tempo from there
/// in one multiplication, so that nothing adds up over time.
class SongClock {
public:
    /// A new rate, and frames counted from 0 again; the song stands where it stood.
    void Prepare(double rate, uint64_t presentFrame);
    /// The song is here at this frame. What agrees with the clock to a thousandth of a frame
    /// changes nothing. A tempo or a beat that is no finite number leaves that of the clock.
    void Set(uint64_t frame, const Transport& place);
    Transport At(uint64_t frame) const;

private:
    double BeatsPerFrame() const { return anchor.tempo / (60.0 * sampleRate); }
    bool Agrees(uint64_t frame, const Transport& place) const;

    double sampleRate = 44100.0;  ///< hertz
    uint64_t anchorFrame = 0;
    Transport anchor;  ///< at anchorFrame
};

}  // namespace Quorvan::Host
