#pragma once

#include <string>

#include <CLI/CLI.hpp>

#include "tools/render/RenderSettings.h"

namespace Quorvan::Tools {

/// The options that say what one render is, on a command line of any command.
class RenderOptions {
public:
    explicit RenderOptions(CLI::App& command);
    RenderOptions(const RenderOptions&) = delete;
    RenderOptions& operator=(const RenderOptions&) = delete;

    /// What the command line that was parsed last asks for.
    RenderSettings Settings() const;
    /// Back to where no option was given, for another command line.
    void Forget();

private:
    void AddFiles();
    void TakeLevels(const std::string& form);
    void AddSound();
    void AddTime();
    void AddForm();

    CLI::App& app;
    RenderSettings settings;
    bool playing = false;
    bool stopped = false;
};

}  // namespace Quorvan::Tools
