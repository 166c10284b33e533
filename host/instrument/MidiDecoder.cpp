#include "host/instrument/MidiDecoder.h"

namespace Quorvan::Host {

namespace {

// Statuses and controllers of the MIDI 1.0 specification.
constexpr uint8_t kNoteOff = 0x80, kNoteOn = 0x90, kControlChange = 0xb0, kChannelPressure = 0xd0,
                  kBend = 0xe0;
constexpr uint8_t kDataCoarse = 6, kDataFine = 38, kNrpnFine = 98, kNrpnCoarse = 99, kRpnFine = 100,
                  kRpnCoarse = 101;
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

void MidiDecoder::Controller(uint8_t channel, uint8_t number, uint8_t value, Values& values) {
    using Kind = MidiSource::Kind;
    if (DataEntry(channel, number, value, values))
        return;
    Add(values, {{Kind::Controller, channel, number}, Of7(value)});
    Channel& state = channels[channel];
    if (number < kFineOffset)
        state.coarse[number] = value;
    else if (number < 2 * kFineOffset) {
        const auto coarse = static_cast<uint8_t>(number - kFineOffset);
        Add(values, {{Kind::FineController, channel, coarse}, Of14(state.coarse[coarse], value)});
    }
}

/// The value comes in two messages; one without the second is taken as coarse.
bool MidiDecoder::DataEntry(uint8_t channel, uint8_t number, uint8_t value, Values& values) {
    Channel& state = channels[channel];
    switch (number) {
        case kNrpnCoarse:
            state.nrpnCoarse = value;
            state.registered = false;
            return true;
        case kNrpnFine:
            state.nrpnFine = value;
            state.registered = false;
            return true;
        case kRpnCoarse:
        case kRpnFine:
            state.registered = true;
            return true;
        case kDataCoarse:
        case kDataFine:
            break;
        default:
            return false;
    }
    if (state.registered)
        return true;
    if (!state.nrpnCoarse || !state.nrpnFine)
        return false;
    const uint8_t fine = number == kDataFine ? value : uint8_t{0};
    if (number == kDataCoarse)
        state.dataCoarse = value;
    const auto parameter = static_cast<uint16_t>((*state.nrpnCoarse << 7) | *state.nrpnFine);
    Add(values, {{MidiSource::Kind::Nrpn, channel, parameter}, Of14(state.dataCoarse, fine)});
    return true;
}

}  // namespace Quorvan::Host
