#include "tools/commands/CompleteLineCommand.h"

#include <iostream>

#include "tools/manual/CommandLine.h"
#include "tools/manual/Completer.h"

namespace Quorvan::Tools {

CompleteLineCommand::CompleteLineCommand(CLI::App& commandLine)
    : Command(commandLine, "complete-line", "Print the words that could end a command line"),
      program(commandLine) {
    Options().group("");
    Options().add_option("line", line, "The command line up to the cursor")->required();
}

ExitCode CompleteLineCommand::Run() {
    for (const Completer::Candidate& candidate : Completer(program).Complete(SplitTyped(line))) {
        std::cout << candidate.word;
        if (!candidate.description.empty())
            std::cout << '\t' << candidate.description;
        std::cout << '\n';
    }
    return ExitCode::Success;
}

}  // namespace Quorvan::Tools
