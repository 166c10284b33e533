#pragma once

#include "host/parameters/ParameterCatalog.h"

namespace Quorvan::Host {

/// The one catalog of a binary whose instances share it, made at the first call, from any thread.
/// Throws std::bad_alloc where memory lacks; the next call tries again.
const ParameterCatalog& SharedCatalog();

}  // namespace Quorvan::Host
