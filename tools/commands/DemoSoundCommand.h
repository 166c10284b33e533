#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "tools/commands/Command.h"

namespace Quorvan::Tools {

/// "tesserae demo-sound": writes a piece of music that the program makes itself.
class DemoSoundCommand final : public Command {
public:
    explicit DemoSoundCommand(CLI::App& program);
    ExitCode Run() override;

private:
    std::filesystem::path output;
    double seconds;
    uint32_t rate = 48000;  ///< hertz
    std::string format;
    bool force = false;
};

}  // namespace Quorvan::Tools
