#include "host/instrument/MidiDecoder.h"

namespace Quorvan::Host {

namespace {

// Statuses and controllers of the MIDI 1.0 specification.
constexpr uint8_t kNoteOff = 0x80, kNoteOn = 0x90, kControlChange = 0xb0, kChannelPressure = 0xd0,
                  kBend = 0xe0;
constexpr uint8_t kDataCoarse = 6, kDataFine = 38, kIncrement = 96, kDecrement = 97, kNrpnFine = 98,
                  kNrpnCoarse = 99, kRpnFine = 100, kRpnCoarse = 101, kFirstMode = 120;
constexpr uint8_t kFineOffset = 32;

float Of7(uint8_t value) { return static_cast<float>(value) / 127.0f; }
float Of14(uint8_t coarse, uint8_t fine) {
    return static_cast<float>((coarse << 7) | fine) / 16383.0f;
}
/// 8192, the middle, is 0.5 exactly, and both ends are reached.
float OfBend(uint8_t coarse, uint8_t fine) {
    const int bend = ((coarse << 7) | fine) - 8192;
    return 0.5f + static_cast<float>(bend) / (bend < 0 ? 16384.0f : 16382.0f);
}

void Add(MidiDecoder::Values& values, const MidiValue& value) {
    values.list[values.count++] = value;
}

}  // namespace

MidiDecoder::Values MidiDecoder::Decode(const std::array<uint8_t, 3>& message) {
    using Kind = MidiSource::Kind;
    Values values;
    if (!CompletesHeld(message))
        values = Release();
    held.reset();
    const auto channel = static_cast<uint8_t>(message[0] & 0x0f);
    const auto first = static_cast<uint8_t>(message[1] & 0x7f);
    const auto second = static_cast<uint8_t>(message[2] & 0x7f);
    switch (message[0] & 0xf0) {
        case kNoteOff:
            Add(values, {{Kind::Note, channel, first}, 0.0f});
            break;
        case kNoteOn:
            Add(values, {{Kind::Note, channel, first}, Of7(second)});
            break;
        case kControlChange:
            Controller(channel, first, second, values);
            break;
        case kChannelPressure:
            Add(values, {{Kind::Pressure, channel, 0}, Of7(first)});
            break;
        case kBend:
            Add(values, {{Kind::PitchBend, channel, 0}, OfBend(second, first)});
            break;
        default:
            break;
    }
    return values;
}

MidiDecoder::Values MidiDecoder::Release() {
    Values values;
    if (held)
        Add(values, *held);
    values.heldFirst = held.has_value();
    held.reset();
    return values;
}

bool MidiDecoder::CompletesHeld(const std::array<uint8_t, 3>& message) const {
    if (!held || message[0] != (kControlChange | held->source.channel))
        return false;
    return message[1] == (held->source.kind == MidiSource::Kind::Nrpn
                              ? kDataFine
                              : held->source.number + kFineOffset);
}

void MidiDecoder::Hold(const MidiSource& source, Wide& wide, uint8_t coarse) {
    if (wide.coarse != coarse)
        wide.fine = 0;
    wide.coarse = coarse;
    held = {source, Of14(coarse, wide.fine)};
}

void MidiDecoder::Controller(uint8_t channel, uint8_t number, uint8_t value, Values& values) {
    using Kind = MidiSource::Kind;
    // From there on they are orders to the device, such as "All Notes Off".
    if (number >= kFirstMode)
        return;
    Channel& state = channels[channel];
    if (Select(state, number, value) || DataEntry(channel, number, value, values))
        return;
    Add(values, {{Kind::Controller, channel, number}, Of7(value)});
    if (number >= 2 * kFineOffset)
        return;
    const auto coarse = static_cast<uint8_t>(number % kFineOffset);
    const MidiSource source{Kind::FineController, channel, coarse};
    Wide& wide = state.controllers[coarse];
    if (number < kFineOffset)
        return Hold(source, wide, value);
    wide.fine = value;
    Add(values, {source, Of14(wide.coarse.value_or(0), value)});
}

/// Which parameter data entry belongs to. 127 in both halves means none of any kind.
bool MidiDecoder::Select(Channel& state, uint8_t number, uint8_t value) {
    if (number < kNrpnFine || number > kRpnCoarse)
        return false;
    const bool registered = number >= kRpnFine;
    auto& coarse = registered ? state.rpnCoarse : state.nrpnCoarse;
    auto& fine = registered ? state.rpnFine : state.nrpnFine;
    auto& half = number == kRpnCoarse || number == kNrpnCoarse ? coarse : fine;
    if (half != value)
        state.data = {};
    half = value;
    state.registered = registered;
    constexpr uint8_t kNone = 127;
    if (coarse == kNone && fine == kNone) {
        state.nrpnCoarse = state.nrpnFine = state.rpnCoarse = state.rpnFine = std::nullopt;
        state.registered = false;
    }
    return true;
}

/// The value comes in two messages. Steps up and down tell none.
bool MidiDecoder::DataEntry(uint8_t channel, uint8_t number, uint8_t value, Values& values) {
    Channel& state = channels[channel];
    const bool isStep = number == kIncrement || number == kDecrement;
    if (number != kDataCoarse && number != kDataFine && !isStep)
        return false;
    if (state.registered)
        return true;
    if (!state.nrpnCoarse || !state.nrpnFine)
        return false;
    if (isStep)
        return true;
    const auto parameter = static_cast<uint16_t>((*state.nrpnCoarse << 7) | *state.nrpnFine);
    const MidiSource source{MidiSource::Kind::Nrpn, channel, parameter};
    if (number == kDataCoarse) {
        Hold(source, state.data, value);
        return true;
    }
    state.data.fine = value;
    Add(values, {source, Of14(state.data.coarse.value_or(0), value)});
    return true;
}

}  // namespace Quorvan::Host
