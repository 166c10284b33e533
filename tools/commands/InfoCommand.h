#pragma once

#include "tools/commands/Command.h"

namespace Quorvan::Tools {

/// "tesserae info": versions, and what the processor does at a sample rate.
class InfoCommand final : public Command {
public:
    explicit InfoCommand(CLI::App& program);
    ExitCode Run() override;

private:
    double rate = 48000.0;  ///< hertz
    bool asJson = false;
};

}  // namespace Quorvan::Tools
