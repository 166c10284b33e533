#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Quorvan::Host {

/// A preset that comes with the program.
struct FactoryPreset {
    std::string_view id;    ///< name of its file without the ending: "dense-cloud"
    std::string_view json;  ///< content of its file, for ReadPreset
};

/// All of them in alphabetical order, but for "init", which is the first.
std::span<const FactoryPreset> FactoryPresets();

/// The one of that name: its id or the name in its file, whatever the case and with blanks and
/// hyphens taken as one and the same. Null where there is none.
const FactoryPreset* FindFactoryPreset(std::string_view name);

/// The sentence for a name that FindFactoryPreset does not know, with suggestions.
std::string UnknownFactoryPreset(std::string_view name);

}  // namespace Quorvan::Host
