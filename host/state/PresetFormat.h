#pragma once

#include <string>
#include <string_view>

#include "host/parameters/ParameterCatalog.h"
#include "host/state/Issue.h"
#include "host/state/Preset.h"

namespace Quorvan::Host {

/// Presets and states as JSON texts.
///
/// Preset  {"format": "tesserae-preset", "version": 1, "name": "Shimmer", "description": "...",
///          "tags": ["pad"], "tempo": 92, "parameters": {"Dry / Wet": 0.7, ...},
///          "routings": [{"source": "Function 1", "destination": "Pitch", "amount": 0.25}, ...]}
/// State   {"format": "tesserae-state", "version": 1, "parameters": {...}}
///
/// Parameters go by full name, as positions 0..1; in place of a number stands, where that reads
/// better, the text that the catalog takes: "Texture", "250 ms". Reading mends what it can: names
/// and keys that nobody knows and values that make no sense are left out, positions are held to
/// 0..1, and each gives a warning. Only "format" and "version" are needed.

inline constexpr int kPresetVersion = 1;
inline constexpr int kStateVersion = 1;

/// A captured sound (CapturePreset) with a name is a preset for a file. Positions stand as texts
/// where those give them back to the bit, as numbers otherwise; the same preset gives the same
/// text.
std::string WritePreset(const Preset& preset, const ParameterCatalog& catalog);
Parsed<Preset> ReadPreset(std::string_view json, const ParameterCatalog& catalog);

/// All positions as numbers.
std::string WriteState(const State& state, const ParameterCatalog& catalog);
Parsed<State> ReadState(std::string_view json, const ParameterCatalog& catalog);

}  // namespace Quorvan::Host
