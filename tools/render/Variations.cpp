#include "tools/render/Variations.h"

#include <string>

#include "primitives/Clock.h"
#include "tools/support/Failure.h"
#include "tools/support/StandardStreams.h"

namespace Quorvan::Tools {

namespace {

void AddNumber(std::filesystem::path& file, uint32_t number, uint32_t count) {
    if (StandardStreams::IsMeant(file))
        throw Failure(ExitCode::Usage,
                      "Variations are files of their own and can't go to standard output. Name a "
                      "file; each gets a number.");
    const size_t digits = std::to_string(count).size();
    std::string text = std::to_string(number);
    text.insert(0, digits - text.size(), '0');
    const std::string ending = file.extension().string();
    file.replace_filename(file.stem().string() + "-" + text + ending);
}

}  // namespace

std::vector<RenderSettings> Variations(const RenderSettings& settings, uint32_t count) {
    const uint64_t first = settings.seed.value_or(prims::SeedFromClock());
    std::vector<RenderSettings> all(count, settings);
    for (uint32_t i = 0; i < count; ++i) {
        all[i].seed = first + i;
        AddNumber(all[i].output, i + 1, count);
        for (auto* file : {&all[i].picture, &all[i].modulationCsv})
            if (*file)
                AddNumber(**file, i + 1, count);
        if (i > 0)
            all[i].savePreset.reset();
    }
    return all;
}

}  // namespace Quorvan::Tools
