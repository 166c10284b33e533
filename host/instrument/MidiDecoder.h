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
/// holds all of them. A 14-bit value whose MSB has come is held until the LSB or any other message
/// comes, or Release is called: between the two it would be somewhere else for a moment. Without an
/// LSB the MSB counts alone, with 0 behind it where it has changed.
class MidiDecoder {
public:
    struct Values {
        std::array<MidiValue, 3> list;
        uint32_t count = 0;
        bool heldFirst = false;  ///< list[0] belongs to the message before
    };

    /// message: up to three bytes, a whole message.
    Values Decode(const std::array<uint8_t, 3>& message);
    /// Whether an MSB waits for its LSB.
    bool IsHolding() const { return held.has_value(); }
    /// What still waits for its LSB.
    Values Release();

private:
    struct Wide {
        std::optional<uint8_t> coarse;  ///< MSB last heard
        uint8_t fine = 0;               ///< LSB since then
    };
    struct Channel {
        std::array<Wide, 32> controllers;
        std::optional<uint8_t> nrpnCoarse, nrpnFine, rpnCoarse, rpnFine;
        Wide data;
        bool registered = false;  ///< data entry belongs to a registered parameter
    };

    bool CompletesHeld(const std::array<uint8_t, 3>& message) const;
    void Controller(uint8_t channel, uint8_t number, uint8_t value, Values& values);
    static bool Select(Channel& state, uint8_t number, uint8_t value);
    bool DataEntry(uint8_t channel, uint8_t number, uint8_t value, Values& values);
    void Hold(const MidiSource& source, Wide& wide, uint8_t coarse);

    std::array<Channel, 16> channels;
    std::optional<MidiValue> held;
};

}  // namespace Quorvan::Host
