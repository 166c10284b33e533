#include "tools/commands/ManualCommand.h"

#include <iostream>

#include "tools/manual/ManualPage.h"

namespace Quorvan::Tools {

ManualCommand::ManualCommand(CLI::App& commandLine)
    : Command(commandLine, "manual", "Print the manual page; try \"tesserae manual | man -l -\""),
      program(commandLine) {}

ExitCode ManualCommand::Run() {
    std::cout << ManualPage(program);
    return ExitCode::Success;
}

}  // namespace Quorvan::Tools
