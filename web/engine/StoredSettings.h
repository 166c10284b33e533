#pragma once

#include <cstdint>
#include <vector>

namespace Quorvan::Web {

/// The parameters that make a sound: every setting, and "Bypass".
const std::vector<uint32_t>& StoredSettings();

}  // namespace Quorvan::Web
