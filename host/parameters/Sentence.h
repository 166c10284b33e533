#pragma once

#include <string>
#include <string_view>

namespace Quorvan::Host {

/// text between double quotes, as sentences cite names.
std::string Quoted(std::string_view text);

}  // namespace Quorvan::Host
