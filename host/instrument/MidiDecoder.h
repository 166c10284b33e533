#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace Quorvan::Host {

/// What a MIDI device moves.
struct MidiSource {
    enum class Kind : uint8_t {
        Controller,      ///< control change, 7 bits
        FineController,  ///< control change with its LSB 32 numbers above, 14 bits; number 0..31
        Nrpn,            ///< non-registered parameter, 14 bits; number 0..16383
        PitchBend,       ///< 14 bits, its middle is 0.5
        Pressure,        ///< of the channel
        Note             ///< as a switch; its value is the velocity, 0 where it ends
    };

    Kind kind = Kind::Controller;
    uint8_t channel = 0;  ///< 0..15
    uint16_t number = 0;  ///< of controller, parameter or note; else 0

    bool operator==(const MidiSource&) const = default;
};

/// A source at a value, 0..1.
struct MidiValue {
    MidiSource source;
    float value = 0.0f;
};

/// Puts messages together to values: pairs of control changes, and the four messages of a
/// non-registered parameter. Neither allocates nor waits.
///
/// A message can mean several things, the LSB of a controller and a controller of its own: Values
/// holds all of them.
class MidiDecoder {
public:
    struct Values {
        std::array<MidiValue, 2> list;
        uint32_t count = 0;
    };

    /// message: up to three bytes, a whole message.
    Values Decode(const std::array<uint8_t, 3>& message);

private:
    struct Channel {
        std::array<uint8_t, 32> coarse{};  ///< MSB last heard of controllers 0..31
        std::optional<uint8_t> nrpnCoarse, nrpnFine;
        uint8_t dataCoarse = 0;
        bool registered = false;  ///< data entry belongs to a registered parameter
    };

    void Controller(uint8_t channel, uint8_t number, uint8_t value, Values& values);
    bool DataEntry(uint8_t channel, uint8_t number, uint8_t value, Values& values);

    std::array<Channel, 16> channels;
};

}  // namespace Quorvan::Host
