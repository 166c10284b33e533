#pragma once

#include "c/tesserae.h"

namespace Quorvan::C {

/// Finds the parameter that a name means, with the settings of processor or, where that is null,
/// of a new one.
tesserae_result FindNamed(const tesserae_processor* processor, const char* name, uint32_t& index);

}  // namespace Quorvan::C
