#include "presets/FactoryPresets.h"

#include <algorithm>

#include "host/parameters/NameDistance.h"
#include "host/parameters/NumberText.h"
#include "presets/EmbeddedPresets.h"

namespace Quorvan::Host {

namespace {

constexpr std::string_view kFirst = "init";

std::vector<FactoryPreset> Ordered() {
    const std::span<const FactoryPreset> embedded = EmbeddedPresets();
    std::vector<FactoryPreset> presets(embedded.begin(), embedded.end());
    std::stable_partition(presets.begin(), presets.end(),
                          [](const FactoryPreset& preset) { return preset.id == kFirst; });
    return presets;
}

/// Lower case, with a hyphen for every blank: the form of the ids.
std::string IdOf(std::string_view name) {
    std::string id = Lower(Trim(name));
    std::replace(id.begin(), id.end(), ' ', '-');
    std::replace(id.begin(), id.end(), '_', '-');
    return id;
}

}  // namespace

std::span<const FactoryPreset> FactoryPresets() {
    static const std::vector<FactoryPreset> presets = Ordered();
    return presets;
}

const FactoryPreset* FindFactoryPreset(std::string_view name) {
    const std::string id = IdOf(name);
    for (const FactoryPreset& preset : FactoryPresets()) {
        if (preset.id == id)
            return &preset;
    }
    return nullptr;
}

std::string UnknownFactoryPreset(std::string_view name) {
    std::vector<std::string> ids;
    for (const FactoryPreset& preset : FactoryPresets())
        ids.emplace_back(preset.id);
    std::string sentence = "There is no preset \"" + std::string(name) + "\".";
    const std::string suggestion = DidYouMean(NearestNames(IdOf(name), ids, 3));
    if (!suggestion.empty())
        sentence += " " + suggestion;
    return sentence;
}

}  // namespace Quorvan::Host
