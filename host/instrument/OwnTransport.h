#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <optional>

#include "host/engine/Transport.h"

namespace Quorvan::Host {

/// The song of an instrument whose host has none: its user sets tempo and lets it run.
///
/// Threads  Set, Run and Rewind from any thread; Next on the audio side.
class OwnTransport {
public:
    void SetTempo(double beatsPerMinute) { tempo.store(beatsPerMinute, std::memory_order_relaxed); }
    double Tempo() const { return tempo.load(std::memory_order_relaxed); }
    void Run(bool runs) { running.store(runs, std::memory_order_relaxed); }
    bool Runs() const { return running.load(std::memory_order_relaxed); }
    /// Back to the song's beginning.
    void Rewind() { rewind.store(true, std::memory_order_relaxed); }

    /// Where the song is, for an engine that has it at present.
    Transport Next(const Transport& present) {
        const bool back = rewind.exchange(false, std::memory_order_relaxed);
        return {Tempo(), back ? 0.0 : present.beat, Runs()};
    }

private:
    std::atomic<double> tempo{120.0};
    std::atomic<bool> running{false};
    std::atomic<bool> rewind{false};
};

/// Finds a tempo from taps: the mean of the last intervals that belong together.
class TapTempo {
public:
    /// A tap at a time in seconds. The tempo, in beats per minute, from the second tap on.
    std::optional<double> Tap(double seconds);

private:
    static constexpr size_t kTaps = 5;
    static constexpr double kLongest = 2.0;  ///< seconds; a longer pause begins anew

    std::array<double, kTaps> times{};
    size_t count = 0;
};

}  // namespace Quorvan::Host
