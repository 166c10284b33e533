#pragma once

#include <filesystem>
#include <string>

#include "host/instrument/Instrument.h"

namespace Quorvan::Host {

/// The MIDI map that new instances begin with: midi-map.json beside the user's presets folder. A
/// state brings its own.

std::filesystem::path DefaultMidiMapFile();
/// Gives it to an instance. Empty where that worked or there is none; else a sentence, and the
/// instance keeps the map that it has.
std::string LoadDefaultMidiMap(Instrument& instrument);
/// Makes the map of an instance the one for all new ones. Empty where it worked.
std::string SaveDefaultMidiMap(const Instrument& instrument);

}  // namespace Quorvan::Host
