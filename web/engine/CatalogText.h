#pragma once

#include <string>

namespace Quorvan::Web {

/// Parameters, modulation and factory presets as one JSON text: all that a page wants to know of
/// them once.
std::string CatalogText();

}  // namespace Quorvan::Web
