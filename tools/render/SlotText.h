#pragma once

#include <string>
#include <vector>

#include "host/engine/Engine.h"
#include "host/parameters/ParameterCatalog.h"

namespace Quorvan::Tools {

/// The effects that an engine sends its sound through, as "FX1 Tape Echo in the loop". Not those of
/// slots that hold nothing, are bypassed, or stay dry whatever modulates them.
std::vector<std::string> SlotTexts(const Host::Engine& engine,
                                   const Host::ParameterCatalog& catalog);

/// Several of them in one line. Of many, the first three and how many more there are.
std::string JoinSlotTexts(const std::vector<std::string>& texts);

}  // namespace Quorvan::Tools
