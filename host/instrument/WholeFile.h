#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace Quorvan::Host {

/// Files that are read and written as a whole. Errors come back as sentences.

/// The content of a file of at most mostBytes; else nothing, and problem says why.
std::optional<std::string> ReadWholeFile(const std::filesystem::path& file, size_t mostBytes,
                                         std::string& problem);
/// Writes beside the place, under a hidden name, and renames: a reader sees the old content or the
/// new one. Makes the folder where it is missing. Empty where it worked.
std::string WriteWholeFile(const std::filesystem::path& wanted, std::string_view content);

}  // namespace Quorvan::Host
