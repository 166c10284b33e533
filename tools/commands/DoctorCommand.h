#pragma once

#include "tools/commands/Command.h"

namespace Quorvan::Tools {

/// "tesserae doctor": tries every part of the installation on a tone of its own.
class DoctorCommand final : public Command {
public:
    explicit DoctorCommand(CLI::App& program);
    ExitCode Run() override;
};

}  // namespace Quorvan::Tools
