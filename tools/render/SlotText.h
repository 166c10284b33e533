#pragma once

#include <string>

#include "host/engine/Engine.h"
#include "host/parameters/ParameterCatalog.h"

namespace Quorvan::Tools {

/// The effects that an engine sends its sound through, as "FX1 Tape Echo in the loop, FX2 Reverb
/// behind the mix". Empty where it has none: slots that hold nothing, are bypassed, or stay dry
/// whatever modulates them.
std::string SlotText(const Host::Engine& engine, const Host::ParameterCatalog& catalog);

}  // namespace Quorvan::Tools
