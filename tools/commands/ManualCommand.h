#pragma once

#include "tools/commands/Command.h"

namespace Quorvan::Tools {

/// "tesserae manual": prints the manual page, for installing it.
class ManualCommand final : public Command {
public:
    explicit ManualCommand(CLI::App& commandLine);
    ExitCode Run() override;

private:
    const CLI::App& program;
};

}  // namespace Quorvan::Tools
