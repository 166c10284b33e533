#include "web/engine/Player.h"

#include <algorithm>

#include "web/engine/Desk.h"
#include "web/engine/StoredSettings.h"

namespace Quorvan::Web {

namespace {

constexpr double kLowestRate = 1000.0;
constexpr double kHighestRate = 768000.0;

}  // namespace

bool Player::CanRunAt(double sampleRate) {
    return sampleRate >= kLowestRate && sampleRate <= kHighestRate;
}

/// In the order of a render, which the sound of its first moments depends on.
Player::Player(std::optional<uint64_t> seed, double sampleRate, const Host::Transport& transport)
    : engine(seed) {
    engine.SetTransport(transport);
    engine.Prepare({.sampleRate = sampleRate, .sendsFeedback = false});
    for (const uint32_t index : StoredSettings())
        values.push_back({index, 0.0f});
    Load();
    engine.Idle(1);
    feed.Prepare(sampleRate);
    engine.AddListener(feed);
}

Player::~Player() { engine.RemoveListener(feed); }

float* Player::Channel(uint32_t channel, uint32_t frames) {
    std::vector<float>& memory = channels[std::min<size_t>(channel, channels.size() - 1)];
    if (memory.size() < frames)
        memory.resize(frames);
    return memory.data();
}

void Player::Process(uint32_t frames) {
    for (const std::vector<float>& memory : channels)
        frames = std::min(frames, static_cast<uint32_t>(memory.size()));
    const std::array<const float*, kSides> in{channels[0].data(), channels[1].data()};
    const std::array<float*, kSides> out{channels[2].data(), channels[3].data()};
    feed.BeginWork();
    feed.HearInput(in.data(), kSides, frames);
    engine.Process({.inputs = in.data(), .outputs = out.data(), .frames = frames});
    feed.HearOutput(out.data(), kSides, frames);
    feed.EndWork(frames);
}

void Player::Load() {
    for (Host::ParameterValue& value : values)
        value.position = Desk::Get().Position(value.index);
    engine.Restore(values);
}

void Player::Watch(bool on) {
    feed.Watch(on);
    engine.SendFeedback(on);
}

const float* Player::Picture() {
    if (!feed.Take())
        return nullptr;
    packet.Fill(feed.Latest());
    return packet.Numbers().data();
}

}  // namespace Quorvan::Web
