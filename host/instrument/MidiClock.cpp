#include "host/instrument/MidiClock.h"

#include <algorithm>
#include <cmath>

namespace Quorvan::Host {

namespace {

constexpr uint8_t kSongPosition = 0xf2, kTick = 0xf8, kStart = 0xfa, kContinue = 0xfb, kStop = 0xfc;
constexpr int64_t kTicksPerSixteenth = 6;
/// A quarter note that differs by less than this share or these seconds may be jitter of the ticks.
constexpr double kSteady = 0.003, kJitter = 0.002;
/// What the ticks tremble by counts with a share beside it, and fades with each tick.
constexpr double kTrembleMargin = 1.5, kTrembleFades = 1.0 - 1.0 / 192.0;
/// How far the song may be from the sender's, in ticks.
constexpr double kNear = 1.0 / 16.0;
/// Ticks that count for the sender's place: a clock that drifts slowly is followed.
constexpr uint64_t kMemory = 384;

}  // namespace

void MidiClock::Prepare(double rate) {
    *this = MidiClock();
    sampleRate = rate;
}

std::optional<Transport> MidiClock::Hear(const std::array<uint8_t, 3>& message, uint64_t frame) {
    switch (message[0]) {
        case kTick:
            return Tick(frame);
        case kStart:
            songTicks = 0;
            [[fallthrough]];
        case kContinue:
            playing = started = true;
            return std::nullopt;
        case kStop:
            playing = started = false;
            return Transport{tempo, static_cast<double>(songTicks) / kTicks, false};
        case kSongPosition:
            songTicks = kTicksPerSixteenth * (message[1] | (message[2] << 7));
            return Transport{tempo, static_cast<double>(songTicks) / kTicks, playing};
        default:
            return std::nullopt;
    }
}

/// The first tick behind a start is the place where the song begins.
std::optional<Transport> MidiClock::Tick(uint64_t frame) {
    bool news = started || songTicks % kTicks == 0;
    // Ticks ahead of a pause tell nothing of those behind it, and many senders begin anew with a
    // start.
    if (started || !Runs(frame))
        Begin(frame);
    else if (IsOtherTempo(frame)) {
        TakeTempo(frame);
        news = true;
    } else {
        Measure(frame);
        news = PutRight() || news;
    }
    Feel(frame);
    frames[ticks++ % kTicks] = frame;
    started = false;
    const Transport place = Place(frame);
    songTicks += playing ? 1 : 0;
    return news ? std::optional(place) : std::nullopt;
}

bool MidiClock::IsOtherTempo(uint64_t frame) const {
    const uint64_t oldest = frames[ticks % kTicks];
    if (ticks < kTicks || frame <= oldest)
        return false;
    const double beat = 60.0 * sampleRate / tempo;
    return std::abs(static_cast<double>(frame - oldest) - beat) >
           std::max({kSteady * beat, kJitter * sampleRate, kTrembleMargin * tremble});
}

/// Another tempo makes one interval differ from the one before it; ticks that tremble, as those
/// that come in the buffers of somebody else, make two such intervals in turn.
void MidiClock::Feel(uint64_t frame) {
    tremble *= kTrembleFades;
    if (ticks < 2)
        return;
    const auto before = [this](uint64_t back) {
        return static_cast<double>(frames[(ticks - back) % kTicks]);
    };
    const double change = std::abs(static_cast<double>(frame) - 2.0 * before(1) + before(2));
    tremble = std::max(tremble, std::min(change, lastChange));
    lastChange = change;
}

/// At the tempo so far, until ticks tell another one.
void MidiClock::Begin(uint64_t frame) {
    ticks = 0;
    lastChange = 0.0;
    lockedTicks = 1;
    sender = song = {static_cast<double>(frame), 60.0 * sampleRate / (tempo * kTicks)};
}

void MidiClock::TakeTempo(uint64_t frame) {
    lockedTicks = kTicks;
    const auto beat = static_cast<double>(frame - frames[ticks % kTicks]);
    sender = {static_cast<double>(frame), beat / kTicks};
    tempo = Rounded(TempoOf(sender));
    song = {sender.last, 60.0 * sampleRate / (tempo * kTicks)};
}

/// The straight line through all ticks so far, by least squares; of many, the later ones count
/// more.
void MidiClock::Measure(uint64_t frame) {
    ++lockedTicks;
    song.last += song.period;
    const auto n = static_cast<double>(std::min(lockedTicks, kMemory));
    const double due = sender.last + sender.period;
    const double late = static_cast<double>(frame) - due;
    sender.last = due + late * 2.0 * (2.0 * n - 1.0) / (n * (n + 1.0));
    sender.period += late * 6.0 / (n * (n + 1.0));
}

/// Whether there was something to put right.
bool MidiClock::PutRight() {
    if (lockedTicks < kTicks || std::abs(sender.last - song.last) <= kNear * song.period)
        return false;
    tempo = Rounded(TempoOf(sender));
    song = {sender.last, 60.0 * sampleRate / (tempo * kTicks)};
    return true;
}

double MidiClock::TempoOf(const Line& line) const {
    return 60.0 * sampleRate / (line.period * kTicks);
}

/// The present tempo, or the one with the fewest decimals, that would have been as right so far.
double MidiClock::Rounded(double exact) const {
    const auto fits = [&](double rounded) {
        const double share = std::abs(rounded / exact - 1.0);
        return share * static_cast<double>(lockedTicks) < 0.5 * kNear;
    };
    double told = fits(tempo) ? tempo : exact;
    for (const double steps : {1000.0, 100.0, 10.0})
        if (const double rounded = std::round(exact * steps) / steps;
            told != tempo && fits(rounded))
            told = rounded;
    return std::clamp(told, 1.0, 999.0);
}

/// Of the song at the last tick, which came at a frame.
Transport MidiClock::Place(uint64_t frame) const {
    const double early = (static_cast<double>(frame) - song.last) / song.period;
    return {tempo, (static_cast<double>(songTicks) + (playing ? early : 0.0)) / kTicks, playing};
}

bool MidiClock::Runs(uint64_t frame) const {
    return ticks > 0 && static_cast<double>(frame - frames[(ticks - 1) % kTicks]) < sampleRate;
}

}  // namespace Quorvan::Host
