#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "host/engine/Transport.h"

namespace Quorvan::Host {

/// Follows MIDI clock, start, stop, continue and song position. Audio side.
///
/// Tempo comes from the last 24 ticks, a quarter note; small wavering of it is left out, since
/// every other tempo makes another tape length. The song is put right where it is off by more than
/// a tick's worth.
class MidiClock {
public:
    /// rate in hertz; forgets everything.
    void Prepare(double rate);
    /// A real-time or song position message at a frame of the stream. Answers where the song is,
    /// where that is news.
    std::optional<Transport> Hear(const std::array<uint8_t, 3>& message, uint64_t frame);
    /// Whether a clock has been heard within the last second before frame.
    bool Runs(uint64_t frame) const;

private:
    std::optional<Transport> Tick(uint64_t frame);
    void MeasureTempo(uint64_t frame);

    static constexpr uint32_t kTicks = 24;  ///< a quarter note

    double sampleRate = 44100.0;
    std::array<uint64_t, kTicks> frames{};  ///< of the last ticks
    uint64_t ticks = 0;                     ///< heard
    int64_t songTicks = 0;                  ///< the next tick's place in the song
    double tempo = 120.0;
    bool playing = false;
    bool started = false;  ///< the next tick is the first one of a start
};

}  // namespace Quorvan::Host
