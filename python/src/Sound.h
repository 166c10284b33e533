#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "host/parameters/PresentSettings.h"
#include "host/state/Preset.h"

namespace Quorvan::Python {

/// A parameter's value as Python writes it: a text, or a number in the parameter's unit.
using Setting = std::variant<std::string, double>;
using Settings = std::vector<std::pair<std::string, Setting>>;

/// The catalog that all of the module reads.
const Host::ParameterCatalog& Catalog();

/// The preset of a name, a file, or, where it begins with "{", a JSON text. Throws KeyError for a
/// name that there is not, Failure for a file that can't be read.
Host::Preset LoadSound(const std::string& source);

/// The parameter that a name means. Throws KeyError for names that mean none that can be written.
uint32_t FindParameter(const std::string& name, const Host::PresentSettings& present);
/// The position of a value. Throws ValueError where it makes no sense.
float PositionOf(uint32_t index, const Setting& value, const Host::PresentSettings& present);

/// "NAME=POSITION" for each, as the renderer takes them. Numbers are read with the preset and the
/// texts in force.
std::vector<std::string> Assignments(const Host::Preset& preset, const Settings& settings);

}  // namespace Quorvan::Python
