#pragma once

#include <stdexcept>
#include <string>

#include "tools/support/ExitCode.h"

namespace Quorvan::Tools {

/// The end of a command that can't go on. The text is a sentence or two for the user: it names the
/// file or parameter at fault and says what to do.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode exitCode, const std::string& sentence)
        : std::runtime_error(sentence), code(exitCode) {}

    ExitCode Code() const { return code; }

private:
    ExitCode code;
};

}  // namespace Quorvan::Tools
