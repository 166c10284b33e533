#pragma once

#include <string>

#include "tools/commands/Command.h"

namespace Quorvan::Tools {

/// "tesserae completions": prints the script by which a shell completes command lines.
class CompletionsCommand final : public Command {
public:
    explicit CompletionsCommand(CLI::App& program);
    ExitCode Run() override;

private:
    std::string shell;
};

}  // namespace Quorvan::Tools
