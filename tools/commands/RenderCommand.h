#pragma once

#include "tools/commands/Command.h"
#include "tools/render/RenderOptions.h"
#include "tools/render/Summary.h"

namespace Quorvan::Tools {

/// "tesserae render": runs a sound file through the processor.
class RenderCommand final : public Command {
public:
    explicit RenderCommand(CLI::App& program);
    ExitCode Run() override;

private:
    void RunOne();
    void RunVariations();
    void Warn(const Summary& summary) const;

    RenderOptions options;
    RenderSettings settings;
    uint32_t variations = 0;  ///< 0: one render, as it is named
    bool asJson = false;
    bool quiet = false;
};

}  // namespace Quorvan::Tools
