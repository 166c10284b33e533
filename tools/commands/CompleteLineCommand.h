#pragma once

#include <string>

#include "tools/commands/Command.h"

namespace Quorvan::Tools {

/// "tesserae complete-line": what the scripts of CompletionScripts ask. Prints a line for each word
/// that could stand at the end of the given one: the word, a tab, what it means. Hidden.
class CompleteLineCommand final : public Command {
public:
    explicit CompleteLineCommand(CLI::App& commandLine);
    ExitCode Run() override;

private:
    const CLI::App& program;
    std::string line;
};

}  // namespace Quorvan::Tools
