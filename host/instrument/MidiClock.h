#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "host/engine/Transport.h"

namespace Quorvan::Host {

/// Follows MIDI clock, start, stop, continue and song position. Audio side.
///
/// The ticks tremble, and every other tempo makes another tape length. So the song runs on at one
/// tempo as long as it stays within a sixteenth of a tick of the sender's, whose place is taken
/// from all ticks together. Where it leaves that, tempo and place are put right: the longer a tempo
/// has been heard, the nearer it is to the sender's. A tempo that is quite another one over a
/// quarter note, by more than the ticks tremble, counts at once.
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
    /// Times are in frames of the stream.
    struct Line {
        double last = 0.0;    ///< when the last tick was due
        double period = 0.0;  ///< from tick to tick
    };

    std::optional<Transport> Tick(uint64_t frame);
    bool IsOtherTempo(uint64_t frame) const;
    void Feel(uint64_t frame);
    void Begin(uint64_t frame);
    void TakeTempo(uint64_t frame);
    void Measure(uint64_t frame);
    bool PutRight();
    double TempoOf(const Line& line) const;
    double Rounded(double exact) const;
    Transport Place(uint64_t frame) const;

    static constexpr uint32_t kTicks = 24;  ///< a quarter note

    double sampleRate = 44100.0;
    std::array<uint64_t, kTicks> frames{};  ///< of the last ticks
    uint64_t ticks = 0;                     ///< heard since a start or a pause
    uint64_t lockedTicks = 0;               ///< that sender is made of
    int64_t songTicks = 0;                  ///< the next tick's place in the song
    double tempo = 120.0;
    double lastChange = 0.0;  ///< of the interval from tick to tick, in frames
    double tremble = 0.0;     ///< what two intervals in turn have lately changed by, in frames
    Line sender;              ///< as all ticks tell it
    Line song;                ///< as it was told
    bool playing = false;
    bool started = false;  ///< the next tick is the first one of a start
};

}  // namespace Quorvan::Host
