#pragma once

#include "tools/batch/Batch.h"
#include "tools/commands/Command.h"

namespace Quorvan::Tools {

/// "tesserae batch": renders the jobs of a list, several at once.
class BatchCommand final : public Command {
public:
    explicit BatchCommand(CLI::App& program);
    ExitCode Run() override;

private:
    void AddShard();

    BatchSettings settings;
    bool quiet = false;
};

}  // namespace Quorvan::Tools
