#include "tools/render/WarningFinder.h"

#include <algorithm>

#include "host/parameters/ModulationNames.h"
#include "host/parameters/Sentence.h"
#include "host/parameters/ShellIndex.h"
#include "tools/support/Numbers.h"

namespace Quorvan::Tools {

namespace {

/// Whether a parameter is a cell of the modulation matrix.
bool IsCell(uint32_t index) {
    constexpr uint32_t kCells = Host::kModulationSources * Host::kModulationDestinations;
    return index >= Host::kFirstAmountIndex && index < Host::kFirstActivatedIndex + kCells;
}

}  // namespace

WarningFinder::WarningFinder(const Host::ParameterCatalog& parameters, const SoundChoice& chosen,
                             const Automation& automated)
    : catalog(parameters),
      sound(chosen),
      automation(automated),
      needs(parameters),
      unheard(needs),
      slots{DrySlot(parameters, 0), DrySlot(parameters, 1)},
      grains(parameters),
      sideChainUse(parameters) {}

std::vector<std::string> WarningFinder::Find(
    const SettingsCourse& course, const std::optional<std::filesystem::path>& sideChain) {
    AskOfPreset();
    AskOfAssignments(course.start);
    Follow(course);
    std::vector<std::string> warnings = unheard.Sentences(catalog);
    const auto add = [&warnings](std::optional<std::string> sentence) {
        if (sentence)
            warnings.push_back(std::move(*sentence));
    };
    for (const DrySlot& slot : slots)
        add(slot.Sentence());
    add(grains.DryMixSentence());
    add(grains.SilentBeatSentence());
    // Presets that a side-chain plays are made to be played by the input too.
    const bool isAsked = std::any_of(
        sound.assigned.begin(), sound.assigned.end(),
        [&](const SoundChoice::Assigned& one) { return sideChainUse.IsSource(one.index); });
    if (sideChain)
        add(sideChainUse.Sentence(sideChain->string()));
    else if (isAsked)
        add(sideChainUse.MissingSentence());
    return warnings;
}

/// A preset is judged as it stands, not by what --set makes of it: who chooses another mode there
/// knows that the preset was made for its own. What it holds for its other modes is no mistake.
void WarningFinder::AskOfPreset() {
    const Host::PresentSettings settings = sound.PresetSettings(catalog);
    for (const Host::ParameterValue& value : sound.asFound.parameters)
        if (needs.IsOfEffect(value.index) && value.position != catalog[value.index].defaultPosition)
            unheard.Ask({value.index, "Preset " + Host::Quoted(sound.asFound.name)}, settings);
}

void WarningFinder::AskOfAssignments(const Host::PresentSettings& settings) {
    for (const SoundChoice::Assigned& assigned : sound.assigned) {
        unheard.Ask({assigned.index, "--set " + Host::Quoted(assigned.text)}, settings);
        grains.Ask(assigned.index);
    }
}

void WarningFinder::Follow(const SettingsCourse& course) {
    Host::PresentSettings settings = course.start;
    See(settings);
    std::vector<bool> asked(automation.Points().size());
    bool isSeen = true;
    for (size_t i = 0; i < course.writes.size(); ++i) {
        const TimedWrite& write = course.writes[i];
        settings.Put(write.index, write.position);
        grains.Ask(write.index);
        isSeen = isSeen && !Decides(write.index);
        // Writes at one moment come into effect together.
        const bool isLast =
            i + 1 == course.writes.size() || course.writes[i + 1].frame != write.frame;
        if (!isLast)
            continue;
        for (size_t k = i + 1; k-- > 0 && course.writes[k].frame == write.frame;) {
            const size_t point = course.writes[k].point;
            if (!asked[point])
                unheard.Ask({course.writes[k].index, automation.Place(point)}, settings);
            asked[point] = true;
        }
        if (!isSeen)
            See(settings);
        isSeen = true;
    }
}

/// Whether anything that is watched hangs on a parameter.
bool WarningFinder::Decides(uint32_t index) const {
    const std::string& name = catalog[index].name;
    return needs.IsDecider(index) || IsCell(index) || grains.Decides(index) || name == "Feedback" ||
           name.ends_with("Dry / Wet") || name.ends_with("_Bypass");
}

void WarningFinder::See(const Host::PresentSettings& settings) {
    unheard.See(settings);
    for (DrySlot& slot : slots)
        slot.See(settings);
    grains.See(settings);
    sideChainUse.See(settings);
}

std::optional<std::string> WritesBehindEnd(const Automation& automation,
                                           const SettingsCourse& course, double rate, double end) {
    // A ramp counts by its first write.
    std::vector<bool> known(automation.Points().size());
    size_t count = 0;
    std::string first;
    for (const TimedWrite& write : course.writes) {
        if (known[write.point])
            continue;
        known[write.point] = true;
        const double seconds = static_cast<double>(write.frame) / rate;
        if (seconds <= end)
            continue;
        if (count++ == 0)
            first = automation.Place(write.point) + " at " + Fixed(seconds, 2) + " s";
    }
    if (count == 0)
        return std::nullopt;
    return (count == 1 ? first + " lies"
                       : Grouped(count) + " points, the first one " + first + ", lie") +
           " behind the end of the sound at " + Fixed(end, 2) +
           " s and did nothing. --tail makes it longer.";
}

std::optional<std::string> LostWrites(uint64_t count) {
    if (count == 0)
        return std::nullopt;
    return Grouped(count) +
           " writes of the automation were left out: too many fall on one moment. "
           "Thin them out.";
}

}  // namespace Quorvan::Tools
