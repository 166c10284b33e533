#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/parameters/ParameterInfo.h"

namespace Quorvan::Host {

/// text with what would move a terminal's cursor or worse spelled out: a line feed as "\n", an
/// escape as "\x1b", and so each byte that is no UTF-8 and both of a control character beyond
/// ASCII.
std::string Visible(std::string_view text);

/// text between double quotes, as sentences cite names, made visible.
std::string Quoted(std::string_view text);

/// How sentences name a parameter: by its title, and by its full name where that is another one.
std::string Cited(const ParameterInfo& info);

/// '"A", "B" or "C"'. Of many, the first four and how many more there are.
std::string Alternatives(const std::vector<std::string>& names);

}  // namespace Quorvan::Host
