#include "tools/batch/Wildcards.h"

#include <fnmatch.h>
#include <glob.h>

#include <algorithm>
#include <filesystem>

#include "host/parameters/Sentence.h"
#include "presets/FactoryPresets.h"
#include "tools/support/Failure.h"

namespace Quorvan::Tools::Wildcards {

namespace {

/// A file whose name holds such letters is itself.
bool IsPattern(const std::string& text) {
    std::error_code ignored;
    return text.find_first_of("*?[") != std::string::npos &&
           !std::filesystem::exists(text, ignored);
}

std::vector<std::string> FactoryPresets(const std::string& pattern) {
    std::vector<std::string> found;
    for (const Host::FactoryPreset& preset : Host::FactoryPresets())
        if (fnmatch(pattern.c_str(), std::string(preset.id).c_str(), 0) == 0)
            found.emplace_back(preset.id);
    if (found.empty())
        throw Failure(ExitCode::Usage, "No factory preset fits " + Host::Quoted(pattern) +
                                           ". \"tesserae presets\" lists them; patterns for files "
                                           "hold a \"/\".");
    return found;
}

}  // namespace

std::vector<std::string> Files(const std::string& pattern) {
    if (!IsPattern(pattern))
        return {pattern};
    glob_t found{};
    const int failed = glob(pattern.c_str(), GLOB_NOSORT, nullptr, &found);
    std::vector<std::string> files;
    if (failed == 0)
        files.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
    globfree(&found);
    if (files.empty())
        throw Failure(ExitCode::Input, "No file fits " + Host::Quoted(pattern) + ".");
    std::sort(files.begin(), files.end());  // by bytes, whatever the locale
    return files;
}

std::vector<std::string> Presets(const std::vector<std::string>& patterns) {
    std::vector<std::string> all;
    for (const std::string& pattern : patterns) {
        const bool isFile = !IsPattern(pattern) || pattern.find('/') != std::string::npos;
        for (const std::string& preset : isFile ? Files(pattern) : FactoryPresets(pattern))
            if (std::find(all.begin(), all.end(), preset) == all.end())
                all.push_back(preset);
    }
    return all;
}

}  // namespace Quorvan::Tools::Wildcards
