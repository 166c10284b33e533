#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace Quorvan::Tools {

/// 'is a link to "x", which does not exist.' for a link to nothing, and nothing for all else.
std::optional<std::string> DanglingLinkText(const std::filesystem::path& path);

}  // namespace Quorvan::Tools
