#pragma once

#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "tools/batch/JobWords.h"
#include "tools/render/RenderOptions.h"
#include "tools/render/RenderSettings.h"

namespace Quorvan::Tools {

/// Turns the words of a job into the settings of a render, by way of the very options that the
/// command line has: a job can say what "tesserae render" can, and is wrong where that is.
class JobParser {
public:
    /// Throws Failure where the words make no sense together.
    RenderSettings Read(const JobWords& words);
    /// The same text for the same job: its words in order of their names, without those that do not
    /// bear on the result.
    static std::string Canonical(const JobWords& words);

private:
    std::vector<std::string> Line(const JobWords& words);
    void AddWord(std::vector<std::string>& line, const std::string& word, const std::string& value);
    [[noreturn]] void RefuseWord(const std::string& word) const;

    void Renew();

    std::unique_ptr<CLI::App> app;
    std::unique_ptr<RenderOptions> options;  ///< of app
    unsigned uses = 0;                       ///< of both
};

}  // namespace Quorvan::Tools
