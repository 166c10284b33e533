#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/instrument/HostControl.h"
#include "host/instrument/MidiMap.h"
#include "host/instrument/SoundPair.h"
#include "host/parameters/ParameterCatalog.h"
#include "host/state/Issue.h"
#include "host/state/Preset.h"

namespace Quorvan::Host {

/// Of an editor, in pixels at a scale of 1. 0: never opened.
struct WindowSize {
    uint32_t width = 0, height = 0;

    bool operator==(const WindowSize&) const = default;
};

/// What a host's port stands at, in the numbers of its format, where that is not its control's.
struct PortValue {
    uint32_t id = 0;  ///< of the host control
    float value = 0.0f;

    bool operator==(const PortValue&) const = default;
};

/// All that a project keeps of an instrument.
struct InstrumentState {
    State sound;            ///< the present one
    float morph = 0.0f;     ///< position of the control
    std::string preset;     ///< name of the preset that the sound came from; may be empty
    bool modified = false;  ///< the sound is not the preset's any more
    std::optional<uint64_t> seed;
    std::array<uint32_t, kAssignments> assignments = Nowhere();
    SoundPair sounds;
    MidiMap midi;
    WindowSize window;
    std::vector<PortValue> ports;
    /// What a newer version wrote and this one does not know, to be written back: a JSON object of
    /// the same shape, with nothing else in it.
    std::string foreign = "{}";

    static constexpr std::array<uint32_t, kAssignments> Nowhere() {
        std::array<uint32_t, kAssignments> all{};
        all.fill(kUnassigned);
        return all;
    }
};

/// Version written. Readers take every version: members that they know, and the rest as foreign.
inline constexpr int kInstrumentStateVersion = 1;

/// States as JSON texts:
///
///   {"format": "tesserae-instrument", "version": 1, "preset": "Shimmer", "modified": false,
///   "seed": 7,
///    "morph": 0.25, "parameters": {"Dry / Wet": 0.7, ...}, "assignments": {"1": "Spatializer
///    Amount"}, "sounds": {"played": "A", "A": {...}, "B": {...},
///    "other": {"preset": "Choir", "modified": true}}, "window": {"width": 1100, "height": 720}}
///
/// "parameters" and sounds hold the settings that differ from those of a new processor, by full
/// name, in index order. "parameters" is what is heard: while a morph lends it something, the sound
/// that is played has settings of its own. "other" is the preset of the one that is not played;
/// texts without it hold the played sound as "parameters" only. A state of the host layer
/// ("tesserae-state") is read as well, as the sound alone. "ports", by symbol, is there where a
/// host's ports did not follow their controls.
/// Channels of MIDI count from 1 there. A MIDI map alone, as the default for new instruments, is
/// {"format": "tesserae-midi-map", "version": 1, "midi": [...]}. Entries of a map that are not
/// understood are written back as they are.
std::string WriteInstrumentState(const InstrumentState& state, const ParameterCatalog& catalog);
Parsed<InstrumentState> ReadInstrumentState(std::string_view text, const ParameterCatalog& catalog);

std::string WriteMidiMap(const MidiMap& map, const ParameterCatalog& catalog);
Parsed<MidiMap> ReadMidiMap(std::string_view text, const ParameterCatalog& catalog);

}  // namespace Quorvan::Host
