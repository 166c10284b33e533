#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/instrument/MidiDecoder.h"
#include "host/parameters/ParameterCatalog.h"

namespace Quorvan::Host {

/// One source of MIDI that moves one parameter.
struct MidiBinding {
    enum class Take : uint8_t {
        Jump,  ///< the parameter is where the source is; what has steps is high while a note lasts
        PickUp,  ///< it waits until the source has come to where it stands
        Toggle   ///< each note, and each rise above the source's middle, turns the parameter over
    };

    MidiSource source;
    uint32_t index = 0;             ///< parameter
    float low = 0.0f, high = 1.0f;  ///< positions for the source's ends; low may be the upper one
    float curve = 0.0f;             ///< -1..1: below 0 rises early, above 0 late; 0 is straight
    Take take = Take::Jump;
    /// Members of a file or state that were not understood, to be written back: a JSON object, or
    /// nothing.
    std::string foreign{};

    bool operator==(const MidiBinding&) const = default;

    /// The position for a value of the source, 0..1.
    float PositionOf(float value) const;
};

/// All of them, in any order.
class MidiMap : public std::vector<MidiBinding> {
public:
    using std::vector<MidiBinding>::vector;

    /// Entries of a file or state that were not understood, to be written back: a JSON list.
    std::string foreign = "[]";

    bool operator==(const MidiMap&) const = default;
};

/// Whether both are moved by one knob, though one of them hears its LSB too.
bool IsSameKnob(const MidiSource& one, const MidiSource& other);

/// "Controller 74", "Pitch Bend", "Note 60", with the channel as people count it: "channel 1".
std::string SourceText(const MidiSource& source);

/// Which moves of parameters a value brings about. Audio side; made elsewhere, with all its memory.
class MidiRoutes {
public:
    MidiRoutes(const MidiMap& midiMap, const ParameterCatalog& catalog);

    /// Calls move(index, position) for each binding that value reaches. standing(index) answers
    /// where a parameter is.
    template <class Standing, class Move>
    void Route(const MidiValue& value, Standing&& standing, Move&& move) {
        for (Bound& bound : bounds) {
            if (!(bound.binding.source == value.source))
                continue;
            if (const auto position = Next(bound, value.value, standing(bound.binding.index)))
                move(bound.binding.index, *position);
        }
    }

private:
    struct Bound {
        MidiBinding binding;
        bool isPressed = false;     ///< a note on what has steps: whatever the velocity
        std::optional<float> last;  ///< position that the source asked for last
        bool caught = false;        ///< PickUp: the parameter follows
        bool above = false;         ///< Toggle: the source is above its middle
    };

    static std::optional<float> Next(Bound& bound, float value, float standing);
    static bool Catches(const Bound& bound, float wanted, float standing);

    std::vector<Bound> bounds;
};

}  // namespace Quorvan::Host
