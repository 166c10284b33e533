#pragma once

#include <string>

#include "tools/commands/Command.h"

namespace Quorvan::Tools {

/// "tesserae presets": lists the factory presets, or shows one.
class PresetsCommand final : public Command {
public:
    explicit PresetsCommand(CLI::App& program);
    ExitCode Run() override;

private:
    ExitCode PrintOne() const;

    std::string name;
    bool asJson = false;
};

}  // namespace Quorvan::Tools
