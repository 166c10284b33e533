#include "host/instrument/MidiClock.h"

#include <algorithm>
#include <cmath>

namespace Quorvan::Host {

namespace {

constexpr uint8_t kSongPosition = 0xf2, kTick = 0xf8, kStart = 0xfa, kContinue = 0xfb, kStop = 0xfc;
constexpr int64_t kTicksPerSixteenth = 6;
/// Tempo moves by less than this share are taken as jitter of the ticks.
constexpr double kSteady = 0.003;

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
    const double before = tempo;
    // Ticks ahead of a pause tell nothing of those behind it.
    if (!Runs(frame))
        ticks = 0;
    MeasureTempo(frame);
    if (!playing)
        return before != tempo
                   ? std::optional(Transport{tempo, static_cast<double>(songTicks) / kTicks, false})
                   : std::nullopt;
    const bool news = started || before != tempo || songTicks % kTicks == 0;
    started = false;
    const Transport place{tempo, static_cast<double>(songTicks++) / kTicks, true};
    return news ? std::optional(place) : std::nullopt;
}

void MidiClock::MeasureTempo(uint64_t frame) {
    uint64_t& oldest = frames[ticks % kTicks];
    if (ticks >= kTicks && frame > oldest) {
        const double measured = 60.0 * sampleRate / static_cast<double>(frame - oldest);
        if (std::abs(measured - tempo) > kSteady * tempo)
            tempo = std::clamp(std::round(measured * 10.0) / 10.0, 1.0, 999.0);
    }
    oldest = frame;
    ++ticks;
}

bool MidiClock::Runs(uint64_t frame) const {
    return ticks > 0 && static_cast<double>(frame - frames[(ticks - 1) % kTicks]) < sampleRate;
}

}  // namespace Quorvan::Host
