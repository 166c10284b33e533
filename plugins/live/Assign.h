#pragma once

#include <string>
#include <vector>

#include "host/instrument/Instrument.h"

namespace Quorvan::Live {

/// Points the free controls at parameters, for a state that a host loads: each wish is "N=NAME",
/// with the number of an "Assign" control. Throws std::invalid_argument, with a sentence, for a
/// number or a name that means nothing.
void Assign(Host::Instrument& instrument, const std::vector<std::string>& wishes);

}  // namespace Quorvan::Live
