#include "tools/render/SavedPreset.h"

#include "host/parameters/Sentence.h"
#include "tools/support/StandardStreams.h"

namespace Quorvan::Tools {

namespace {

/// "a, b and c.".
std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (size_t i = 0; i < texts.size(); ++i)
        joined += (i == 0 ? "" : i + 1 == texts.size() ? " and " : ", ") + texts[i];
    return joined + ".";
}

}  // namespace

Host::Preset SavedPreset(Host::Preset sound, const Host::Preset& origin,
                         const RenderSettings& settings) {
    const bool hasName = settings.savePreset && !StandardStreams::IsMeant(*settings.savePreset);
    sound.name = hasName ? settings.savePreset->stem().string() : origin.name;
    sound.description = settings.assignments.empty()
                            ? origin.description
                            : Host::Quoted(origin.name) + " with " + Joined(settings.assignments);
    sound.tags = origin.tags;
    sound.tempo = settings.tempo ? settings.tempo : origin.tempo;
    return sound;
}

}  // namespace Quorvan::Tools
