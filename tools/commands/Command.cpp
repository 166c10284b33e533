#include "tools/commands/Command.h"

#include <iostream>

#include "tools/support/Failure.h"

namespace Quorvan::Tools {

void Command::CheckPrinted() {
    if (!std::cout.flush())
        throw Failure(ExitCode::Output,
                      "The output could not be written whole. Look whether the disk is full.");
}

}  // namespace Quorvan::Tools
