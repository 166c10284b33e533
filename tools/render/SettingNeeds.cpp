#include "tools/render/SettingNeeds.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "host/parameters/Sentence.h"
#include "host/parameters/SlotEffects.h"
#include "tools/render/RoutingReader.h"

namespace Quorvan::Tools {

namespace {

constexpr uint32_t kClassic = 1, kTexture = 2, kBeat = 4;  // the granular mode, as bits
constexpr uint32_t kFirst = 1, kSecond = 2, kThird = 4;    // of other selectors
constexpr uint32_t kAnyEffect = ~1u;

/// Parameters with these starts of their names need the selector at one of the choices, bit n for
/// choice n; all the time, or only in these granular modes. Of two rows for one parameter the later
/// one counts. Parameters that share a label with others are told apart by the catalog.
struct ModeRow {
    std::string_view prefix, selector;
    uint32_t choices, modes = ~0u;
};
constexpr std::array kModes{
    ModeRow{"MoteWeaver_RandomLayers", "MoteWeaver_GranularMode", kTexture},
    ModeRow{"MoteWeaver_TextureSizeMidiSync", "MoteWeaver_GranularMode", kTexture},
    ModeRow{"MoteWeaver_StepSequencerGranular_", "MoteWeaver_GranularMode", kBeat},
    ModeRow{"MoteWeaver_BeatDensityType", "MoteWeaver_GranularMode", kBeat},
    ModeRow{"MoteWeaver_BeatOffsetType", "MoteWeaver_GranularMode", kBeat},
    ModeRow{"MoteWeaver_SequencerRetrig", "MoteWeaver_GranularMode", kBeat},
    ModeRow{"MoteWeaver_DensityType", "MoteWeaver_GranularMode", kClassic},
    ModeRow{"MoteWeaver_DensitySizeLink", "MoteWeaver_GranularMode", kClassic},
    // Jitter moves a clock that the texture does not listen to; the beat always skips.
    ModeRow{"MoteWeaver_RandomDensity", "MoteWeaver_RandomDensityArrow", kSecond, kTexture},
    ModeRow{"MoteWeaver_RandomDensityArrow", "MoteWeaver_GranularMode", kClassic | kTexture},
    ModeRow{"MoteWeaver_TransientSensitivity", "MoteWeaver_PlaybackQuantizationMode", kSecond},
    ModeRow{"MoteWeaver_GridSize", "MoteWeaver_PlaybackQuantizationMode", kThird},
    ModeRow{"MoteWeaver_GrainTrigger", "MoteWeaver_TriggerMode", kSecond},
    ModeRow{"MoteWeaver_PlayHeadRetrig", "MoteWeaver_PlaybackMode", kFirst},
    ModeRow{"MoteWeaver_RandomPan", "Spatializer Enable", kSecond},
    ModeRow{"Spatializer ", "Spatializer Enable", kSecond},
    ModeRow{"LFO_Stereo_", "Spatializer Enable", kSecond},
    ModeRow{"FX1_Dry / Wet", "FX1_ModuleType", kAnyEffect},
    ModeRow{"FX1_Bypass", "FX1_ModuleType", kAnyEffect},
    ModeRow{"FX2_Dry / Wet", "FX2_ModuleType", kAnyEffect},
    ModeRow{"FX2_Bypass", "FX2_ModuleType", kAnyEffect}};

/// '"A=x"', '"A=x" or "A=y"'; of many the first for an example.
std::string Advice(const Host::ParameterInfo& selector, uint32_t choices) {
    std::vector<std::string> ways;
    for (size_t i = 0; i < selector.choices.size(); ++i)
        if ((choices >> i & 1u) != 0)
            ways.push_back(selector.title + "=" + selector.choices[i]);
    return ways.size() > 2 ? Host::Quoted(ways.front()) + ", for example"
                           : Host::Alternatives(ways);
}

/// Whether name starts with prefix. The end of the prefix is looked at first: it rules out most
/// names of the catalog, many of which start alike.
bool Starts(const std::string& name, std::string_view prefix) {
    return name.size() >= prefix.size() && name[prefix.size() - 1] == prefix.back() &&
           name.starts_with(prefix);
}

}  // namespace

SettingNeeds::SettingNeeds(const Host::ParameterCatalog& parameters)
    : catalog(parameters),
      needs(parameters.Count()),
      sources(parameters.Count()),
      isDecider(parameters.Count()),
      granularMode(parameters.Find("MoteWeaver_GranularMode").value()),
      gateSource(parameters.Find("MoteWeaver_GateSelection").value()),
      places(parameters) {
    const Host::SlotEffects effects(catalog.All());
    for (const Host::ParameterInfo& info : catalog.All()) {
        isDecider[info.index] = catalog.Decides(info.index);
        if (const auto& effect = effects.Of(info.index))
            needs[info.index] = {effect->selector, 1u << effect->choice, ~0u, true};
    }
    AddModes();
    AddSources();
}

void SettingNeeds::AddModes() {
    std::array<Need, kModes.size()> rows;
    std::transform(kModes.begin(), kModes.end(), rows.begin(), [this](const ModeRow& row) {
        return Need{catalog.Find(row.selector).value(), row.choices, row.modes};
    });
    for (const Need& row : rows)
        isDecider[row.selector] = true;
    isDecider[granularMode] = true;
    // The catalog is long, and gone through once.
    for (const Host::ParameterInfo& info : catalog.All())
        for (size_t i = 0; i < rows.size(); ++i)
            if (Starts(info.name, kModes[i].prefix) && info.index != rows[i].selector)
                needs[info.index] = rows[i];
}

/// What modulates has to be routed, and an amount switched on.
void SettingNeeds::AddSources() {
    for (const Host::ParameterInfo& info : catalog.All())
        for (uint32_t source = 0; source < Host::kModulationSources; ++source)
            if (const std::string& name = Host::SourceName(source);
                info.group == name || info.title == name)
                sources[info.index] = source;
    for (uint32_t source = 0; source < Host::kModulationSources; ++source)
        for (uint32_t row = 0; row < Host::kModulationDestinations; ++row)
            needs[Host::AmountIndex(source, row)] = {Host::ActivatedIndex(source, row), kSecond};
}

std::optional<std::string> SettingNeeds::Missing(uint32_t index,
                                                 const Host::PresentSettings& settings) const {
    const auto stands = [&](uint32_t selector, uint32_t choices) {
        return (choices >> settings.Choice(selector) & 1u) != 0;
    };
    if (const auto& need = needs[index];
        need && stands(granularMode, need->modes) && !stands(need->selector, need->choices))
        return OfNeed(*need, settings);
    if (index == gateSource)
        return "the gate is shown to hosts, and nothing in the sound listens to it.";
    if (auto reason = places.Missing(index, settings))
        return reason;
    if (const auto& source = sources[index]; source && !MovesAnything(settings, *source))
        return Host::SourceName(*source) + " is routed to nothing. " +
               RoutingAdvice(catalog, *source);
    return OfFamily(index, settings);
}

std::string SettingNeeds::OfNeed(const Need& need, const Host::PresentSettings& settings) const {
    const Host::ParameterInfo& selector = catalog[need.selector];
    const uint32_t present = settings.Choice(need.selector);
    const std::string advice = Advice(selector, need.choices);
    if (!need.isEffect && need.choices != kAnyEffect)
        return Host::Quoted(selector.title) + " stands at " + selector.choices[present] +
               ". It counts with " + advice + ".";
    const std::string holds =
        selector.group +
        (present == 0 ? " holds no effect" : " holds the " + selector.choices[present]);
    return holds + ". It counts with " + advice + OtherSlot(need, settings) + ".";
}

std::string SettingNeeds::OtherSlot(const Need& need, const Host::PresentSettings& settings) const {
    const std::string& name = catalog[need.selector].name;
    const std::string other = name.starts_with("FX1") ? "FX2" : "FX1";
    const uint32_t selector = catalog.Find(other + name.substr(other.size())).value();
    return (need.choices >> settings.Choice(selector) & 1u) != 0
               ? "; the one that sounds is in " + other
               : "";
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
