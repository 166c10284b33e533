#pragma once

#include <ostream>

#include "host/parameters/ParameterCatalog.h"
#include "host/state/Preset.h"

namespace Quorvan::Tools {

/// Prints a preset for people: its description, every setting under the musicians' name beside the
/// full one, and what modulates what.
void PrintPresetSheet(const Host::Preset& preset, const Host::ParameterCatalog& catalog,
                      std::ostream& out);

}  // namespace Quorvan::Tools
