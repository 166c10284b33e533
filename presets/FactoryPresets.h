#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/state/FactoryPreset.h"

namespace Quorvan::Host {

/// All of them in alphabetical order, but for "init", which is the first.
std::span<const FactoryPreset> FactoryPresets();

/// The one of that name: its id or the name in its file, whatever the case and with blanks and
/// hyphens taken as one and the same. Null where there is none.
const FactoryPreset* FindFactoryPreset(std::string_view name);

/// The sentence for a name that FindFactoryPreset does not know, with suggestions.
std::string UnknownFactoryPreset(std::string_view name);

}  // namespace Quorvan::Host
