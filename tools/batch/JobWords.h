#pragma once

#include <string>
#include <utility>
#include <vector>

namespace Quorvan::Tools {

/// One job as its list writes it: the names of the options of "tesserae render" without dashes,
/// each with its value, in the list's order. Several may have the same name; a switch has "true" or
/// "false".
using JobWords = std::vector<std::pair<std::string, std::string>>;

}  // namespace Quorvan::Tools
