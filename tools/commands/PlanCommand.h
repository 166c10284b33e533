#pragma once

#include "tools/batch/JobPlan.h"
#include "tools/commands/Command.h"

namespace Quorvan::Tools {

/// "tesserae plan": writes a list of jobs for "tesserae batch".
class PlanCommand final : public Command {
public:
    explicit PlanCommand(CLI::App& program);
    ExitCode Run() override;

private:
    PlanSettings settings;
    std::string seeds;
    std::string output = "-";
    bool force = false;
};

}  // namespace Quorvan::Tools
