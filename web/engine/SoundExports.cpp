#include <optional>

#include "web/engine/Desk.h"
#include "web/engine/Export.h"
#include "web/engine/Player.h"

/// The engine that sounds, for the audio thread and the worker. Each function stands with its
/// meaning in web/src/engine/EngineExports.ts. Ahead of a start they do nothing.

using namespace Quorvan;

namespace {

std::optional<Web::Player> player;

}  // namespace

TESSERAE_EXPORT(tesserae_start)
int32_t Start(double sampleRate, int32_t hasSeed, uint32_t seedLow, uint32_t seedHigh, double tempo,
              double beat, int32_t playing) {
    if (!Web::Player::CanRunAt(sampleRate)) {
        Web::Desk::Get().Leave("The sample rate has to be from 1000 to 768000 Hz.");
        return 0;
    }
    const uint64_t seed = static_cast<uint64_t>(seedHigh) << 32 | seedLow;
    player.emplace(hasSeed != 0 ? std::optional(seed) : std::nullopt, sampleRate,
                   Host::Transport{tempo, beat, playing != 0});
    return 1;
}

TESSERAE_EXPORT(tesserae_latency) uint32_t Latency() {
    return player ? player->GetEngine().LatencyFrames() : 0;
}

TESSERAE_EXPORT(tesserae_channel_at) float* ChannelAt(uint32_t channel, uint32_t frames) {
    return player ? player->Channel(channel, frames) : nullptr;
}

TESSERAE_EXPORT(tesserae_process) void Process(uint32_t frames) {
    if (player)
        player->Process(frames);
}

TESSERAE_EXPORT(tesserae_set) void Set(uint32_t index, float position) {
    if (player)
        player->GetEngine().Write(index, position);
}

TESSERAE_EXPORT(tesserae_load) void Load() {
    if (player)
        player->Load();
}

TESSERAE_EXPORT(tesserae_transport) void SetTransport(double tempo, double beat, int32_t playing) {
    if (player)
        player->GetEngine().SetTransport({tempo, beat, playing != 0});
}

TESSERAE_EXPORT(tesserae_beat) double Beat() {
    return player ? player->GetEngine().GetTransport().beat : 0.0;
}

TESSERAE_EXPORT(tesserae_tempo) void SetTempo(double tempo) {
    if (player)
        player->GetEngine().SetTempo(tempo);
}

TESSERAE_EXPORT(tesserae_panic) void Panic() {
    if (player)
        player->GetEngine().Panic();
}

TESSERAE_EXPORT(tesserae_watch) void Watch(int32_t on) {
    if (player)
        player->Watch(on != 0);
}

TESSERAE_EXPORT(tesserae_picture) const float* Picture() {
    return player ? player->Picture() : nullptr;
}
