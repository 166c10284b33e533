#pragma once

#include <cstdint>
#include <string_view>

#include "host/instrument/Instrument.h"

namespace Quorvan::Live {

/// Index of the parameter that a name on the command line means: what the host control of that name
/// moves at present, in any case of letters, else any name of a parameter. What it means has a
/// position to be moved. Throws std::invalid_argument, with a sentence, where there is none.
uint32_t ParameterNamed(const Host::Instrument& instrument, std::string_view name);

}  // namespace Quorvan::Live
