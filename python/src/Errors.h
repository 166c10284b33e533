#pragma once

#include <string>

namespace Quorvan::Python {

/// Turns what the renderer throws into what Python has for it: OSError for files, ValueError for
/// what makes no sense. To be called once, when the module is made.
void RegisterErrors();

/// Throws KeyError, with the sentence.
[[noreturn]] void RefuseName(const std::string& sentence);
/// Throws ValueError.
[[noreturn]] void RefuseValue(const std::string& sentence);

}  // namespace Quorvan::Python
