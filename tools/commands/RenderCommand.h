#pragma once

#include "tools/commands/Command.h"
#include "tools/render/RenderSettings.h"

namespace Quorvan::Tools {

/// "tesserae render": runs a sound file through the processor.
class RenderCommand final : public Command {
public:
    explicit RenderCommand(CLI::App& program);
    ExitCode Run() override;

private:
    void AddFiles();
    void AddSound();
    void AddTime();
    void AddForm();

    RenderSettings settings;
    bool playing = false;
    bool stopped = false;
    bool asJson = false;
    bool quiet = false;
};

}  // namespace Quorvan::Tools
