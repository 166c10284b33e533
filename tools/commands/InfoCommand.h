#pragma once

#include <filesystem>

#include "tools/commands/Command.h"

namespace Quorvan::Tools {

/// "tesserae info": versions, and what the processor does at a sample rate; or what a sound file is
/// and how it was made.
class InfoCommand final : public Command {
public:
    explicit InfoCommand(CLI::App& program);
    ExitCode Run() override;

private:
    void PrintFile() const;
    void PrintVersions() const;

    std::filesystem::path file;
    double rate = 48000.0;  ///< hertz
    bool asJson = false;
};

}  // namespace Quorvan::Tools
