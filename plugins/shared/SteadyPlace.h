#pragma once

#include <cstdint>

#include "host/instrument/Instrument.h"

namespace Quorvan::Plugins {

/// Hosts count the song in whole ticks, or in numbers with few digits: told anew with each buffer,
/// its place would tremble. As long as it runs on, frame by frame and at one tempo, the place is
/// the instrument's own count; where it jumps, the host's.
///
/// Threads  audio thread.
class SteadyPlace {
public:
    /// told is where the host says the song is at its frame, at the start of a buffer of so many
    /// frames.
    Host::Transport Steady(Host::Transport told, int64_t frame, uint32_t frames,
                           const Host::Instrument& instrument) {
        const bool runsOn = told.playing && last.playing && told.tempo == last.tempo;
        const bool jumps = frame != next;
        last = told;
        next = frame + (told.playing ? frames : 0);
        if (runsOn && !jumps)
            told.beat = instrument.Place().beat;
        return told;
    }

private:
    Host::Transport last;
    int64_t next = 0;  ///< frame that the next buffer starts at, where nothing jumps
};

}  // namespace Quorvan::Plugins
