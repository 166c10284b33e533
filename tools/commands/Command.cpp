#include "tools/commands/Command.h"

#include <sys/stat.h>
#include <unistd.h>

#include <iostream>

#include "tools/support/Failure.h"

namespace Quorvan::Tools {

namespace {

/// A reader may go when it has read enough, as "head" does.
bool PrintsToAReader() {
    struct stat output {};
    return fstat(STDOUT_FILENO, &output) == 0 &&
           (S_ISFIFO(output.st_mode) || S_ISSOCK(output.st_mode));
}

}  // namespace

ExitCode Command::Printed() {
    if (!std::cout.flush() && !PrintsToAReader())
        throw Failure(ExitCode::Output,
                      "The output could not be written whole. Look whether the disk is full.");
    return ExitCode::Success;
}

}  // namespace Quorvan::Tools
