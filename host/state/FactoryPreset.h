#pragma once

#include <string_view>

namespace Quorvan::Host {

/// A preset that comes with the program.
struct FactoryPreset {
    std::string_view id;    ///< name of its file without the ending: "dense-cloud"
    std::string_view json;  ///< content of its file, for ReadPreset
};

}  // namespace Quorvan::Host
