#pragma once

#include "host/parameters/ParameterCatalog.h"

namespace Quorvan::Plugins {

/// The one catalog of this binary, made when it is first asked for; from any thread.
const Host::ParameterCatalog& SharedCatalog();

}  // namespace Quorvan::Plugins
