#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Quorvan::Tools {

/// A command line that is being typed, taken apart as shells do, with quotes and backslashes
/// resolved. The last word is the one under way: empty behind a blank, and with its quote still
/// open as often as not.
std::vector<std::string> SplitTyped(std::string_view line);

}  // namespace Quorvan::Tools
