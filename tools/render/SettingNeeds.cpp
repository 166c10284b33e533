#include "tools/render/SettingNeeds.h"

#include <array>
#include <string_view>

#include "host/parameters/Sentence.h"
#include "host/parameters/SlotEffects.h"
#include "tools/render/RoutingReader.h"

namespace Quorvan::Tools {

namespace {

/// Parameters with these starts of their names need the selector at this choice. Those that share
/// a label with others are told apart by the catalog.
struct ModeRow {
    std::string_view prefix, selector;
    uint32_t choice;
};
constexpr std::array<ModeRow, 9> kModes{{
    {"MoteWeaver_RandomLayers", "MoteWeaver_GranularMode", 1},
    {"MoteWeaver_TextureSizeMidiSync", "MoteWeaver_GranularMode", 1},
    {"MoteWeaver_StepSequencerGranular_", "MoteWeaver_GranularMode", 2},
    {"MoteWeaver_BeatDensityType", "MoteWeaver_GranularMode", 2},
    {"MoteWeaver_BeatOffsetType", "MoteWeaver_GranularMode", 2},
    {"MoteWeaver_TransientSensitivity", "MoteWeaver_PlaybackQuantizationMode", 1},
    {"MoteWeaver_GridSize", "MoteWeaver_PlaybackQuantizationMode", 2},
    {"MoteWeaver_GrainTrigger", "MoteWeaver_TriggerMode", 1},
    {"Spatializer ", "Spatializer Enable", 1},
}};

}  // namespace

SettingNeeds::SettingNeeds(const Host::ParameterCatalog& parameters)
    : catalog(parameters),
      needs(parameters.Count()),
      sources(parameters.Count()),
      isDecider(parameters.Count()) {
    const Host::SlotEffects effects(catalog.All());
    for (const Host::ParameterInfo& info : catalog.All()) {
        isDecider[info.index] = catalog.Decides(info.index);
        if (const auto& effect = effects.Of(info.index))
            needs[info.index] = {effect->selector, effect->choice, true};
    }
    AddModes();
    AddSources();
}

void SettingNeeds::AddModes() {
    for (const ModeRow& row : kModes)
        Add(std::string(row.prefix), {catalog.Find(row.selector).value(), row.choice});
}

/// What modulates has to be routed, and an amount switched on.
void SettingNeeds::AddSources() {
    for (uint32_t source = 0; source < Host::kModulationSources; ++source) {
        const std::string& name = Host::SourceName(source);
        for (const Host::ParameterInfo& info : catalog.All())
            if (info.group == name || info.title == name)
                sources[info.index] = source;
        for (uint32_t row = 0; row < Host::kModulationDestinations; ++row)
            needs[Host::AmountIndex(source, row)] = {Host::ActivatedIndex(source, row), 1};
    }
}

void SettingNeeds::Add(const std::string& prefix, const Need& need) {
    for (const Host::ParameterInfo& info : catalog.All())
        if (info.name.starts_with(prefix) && info.index != need.selector)
            needs[info.index] = need;
    isDecider[need.selector] = true;
}

std::optional<std::string> SettingNeeds::Missing(uint32_t index,
                                                 const Host::PresentSettings& settings) const {
    if (const auto& need = needs[index]; need && settings.Choice(need->selector) != need->choice)
        return OfNeed(*need, settings);
    if (const auto& source = sources[index]; source && !MovesAnything(settings, *source))
        return Host::SourceName(*source) + " is routed to nothing. " +
               RoutingAdvice(catalog, *source);
    return OfFamily(index, settings);
}

std::string SettingNeeds::OfNeed(const Need& need, const Host::PresentSettings& settings) const {
    const Host::ParameterInfo& selector = catalog[need.selector];
    const std::string& wanted = selector.choices[need.choice];
    const std::string& present = selector.choices[settings.Choice(need.selector)];
    const std::string advice = Host::Quoted(selector.title + "=" + wanted);
    if (!need.isEffect)
        return Host::Quoted(selector.title) + " stands at " + present + ". It counts with " +
               advice + ".";
    const std::string holds =
        selector.group +
        (present == selector.choices.front() ? " holds no effect" : " holds the " + present);
    return holds + ". It counts with " + advice + OtherSlot(need, settings) + ".";
}

std::string SettingNeeds::OtherSlot(const Need& need, const Host::PresentSettings& settings) const {
    const std::string& name = catalog[need.selector].name;
    const std::string other = name.starts_with("FX1") ? "FX2" : "FX1";
    const uint32_t selector = catalog.Find(other + name.substr(other.size())).value();
    return settings.Choice(selector) == need.choice ? "; the one that sounds is in " + other : "";
}

std::optional<std::string> SettingNeeds::OfFamily(uint32_t index,
                                                  const Host::PresentSettings& settings) const {
    const std::string common = catalog.CommonName(index);
    if (common.empty() || catalog.IsInForce(index, settings))
        return std::nullopt;
    const uint32_t counting = catalog.Resolve(common, settings).value();
    return Host::Cited(catalog[counting]) + " is what counts now. Set that, or just " +
           Host::Quoted(common) + ".";
}

}  // namespace Quorvan::Tools
