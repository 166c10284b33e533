#pragma once

#include <string>
#include <vector>

namespace Quorvan::Tools::Wildcards {

/// The files that a pattern of the shell's kind stands for, in order of their bytes; a name without
/// "*", "?" and "[" stands for itself. Throws Failure where there is none.
std::vector<std::string> Files(const std::string& pattern);

/// Likewise for presets: patterns without a "/" stand for factory presets, others for files. Each
/// comes once.
std::vector<std::string> Presets(const std::vector<std::string>& patterns);

}  // namespace Quorvan::Tools::Wildcards
