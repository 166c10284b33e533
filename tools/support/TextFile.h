#pragma once

#include <filesystem>
#include <string>

namespace Quorvan::Tools {

/// The whole of a small text file. Throws Failure, with a sentence, where it can't be read or is
/// too long to be meant.
std::string ReadTextFile(const std::filesystem::path& path);

}  // namespace Quorvan::Tools
