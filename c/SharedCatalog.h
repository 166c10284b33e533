#pragma once

#include "host/parameters/ParameterCatalog.h"

namespace Quorvan::C {

/// The one catalog of the process, made at the first call, from any thread. Throws std::bad_alloc
/// where memory lacks; the next call tries again.
const Host::ParameterCatalog& SharedCatalog();

}  // namespace Quorvan::C
