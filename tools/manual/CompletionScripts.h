#pragma once

#include <string>

namespace Quorvan::Tools {

/// The script that teaches a shell to complete the program's command lines; empty for a shell that
/// is not known. The scripts know none of the options themselves: they ask the program, through
/// "tesserae complete-line".
std::string CompletionScript(const std::string& shell);

}  // namespace Quorvan::Tools
