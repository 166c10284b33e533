#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Quorvan::Tools {

/// The fields of one line of a table: split at commas, or at semicolons or tabs where there are any
/// outside quotes; trimmed; double quotes around a field taken off, and doubled ones inside it made
/// single. No fields for a blank line or a remark, which begins with "#".
std::vector<std::string> SplitCsvLine(std::string_view line);

}  // namespace Quorvan::Tools
