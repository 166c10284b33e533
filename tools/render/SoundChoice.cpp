#include "tools/render/SoundChoice.h"

#include <algorithm>

#include "host/parameters/ModulationNames.h"
#include "host/parameters/NumberText.h"
#include "host/parameters/Sentence.h"
#include "host/state/PresetFormat.h"
#include "presets/FactoryPresets.h"
#include "tools/render/PositionText.h"
#include "tools/support/Failure.h"
#include "tools/support/TextFile.h"

namespace Quorvan::Tools {

namespace {

bool LooksLikeFile(const std::string& name) {
    return name.find('/') != std::string::npos ||
           Host::Lower(std::filesystem::path(name).extension().string()) == ".json";
}

Host::Preset Understand(std::string_view json, const std::string& name,
                        const Host::ParameterCatalog& catalog, std::vector<std::string>& warnings) {
    Host::Parsed<Host::Preset> parsed = Host::ReadPreset(json, catalog);
    for (const Host::Issue& issue : parsed.issues) {
        const std::string sentence = "Preset " + Host::Quoted(name) + ": " + issue.text;
        if (!parsed.value && issue.severity == Host::Issue::Severity::Error)
            throw Failure(ExitCode::Input, sentence);
        warnings.push_back(sentence);
    }
    if (!parsed.value)
        throw Failure(ExitCode::Input, "Preset " + Host::Quoted(name) + " can't be read.");
    if (parsed.value->name.empty())
        parsed.value->name = name;
    return std::move(*parsed.value);
}

void Put(std::vector<Host::ParameterValue>& values, Host::ParameterValue value) {
    const auto place = std::find_if(values.begin(), values.end(),
                                    [&](const auto& other) { return other.index == value.index; });
    if (place == values.end())
        values.push_back(value);
    else
        *place = value;
}

/// Turns the routings of a preset into writes to the matrix, so that --set can change those too.
void SpellRoutingsOut(Host::Preset& preset) {
    for (const Host::Routing& routing : preset.routings) {
        Put(preset.parameters, {Host::AmountIndex(routing.source, routing.destination),
                                Host::AmountPosition(routing.amount)});
        Put(preset.parameters, {Host::ActivatedIndex(routing.source, routing.destination), 1.0f});
    }
    preset.routings.clear();
}

[[noreturn]] void Refuse(const std::string& assignment, const std::string& problem) {
    throw Failure(ExitCode::Usage, "--set " + Host::Quoted(assignment) + ": " + problem);
}

/// The parts of a text NAME=POSITION.
struct Assignment {
    std::string whole;
    std::string name;
    std::string position;
};

Assignment Split(const std::string& text) {
    const size_t sign = text.find('=');
    if (sign == std::string::npos)
        Refuse(text, "Write NAME=POSITION, such as \"Dry / Wet=0.5\".");
    return {text, text.substr(0, sign), text.substr(sign + 1)};
}

void Assign(SoundChoice& sound, Host::PresentSettings& settings, const Assignment& assignment,
            const Host::ParameterCatalog& catalog) {
    const NamedParameter named = FindWritable(catalog, assignment.name, settings);
    if (!named.index && Host::Lower(Host::Trim(assignment.name)) == "tempo")
        Refuse(assignment.whole,
               "The tempo is the song's and no part of the sound. Write --tempo " +
                   std::string(Host::Trim(assignment.position)) + ".");
    if (!named.index)
        Refuse(assignment.whole, named.problem);
    const Host::TextResult result =
        ReadPosition(catalog, *named.index, assignment.position, settings.Texts());
    if (!result.position)
        Refuse(assignment.whole, result.problem);
    const Host::ParameterValue value{*named.index, *result.position};
    sound.assigned.push_back({value.index, assignment.whole});
    const bool isLever = catalog[value.index].role == Host::ParameterRole::Control;
    Put(isLever ? sound.levers : sound.preset.parameters, value);
    settings.Put(value.index, value.position);
}

}  // namespace

Host::Preset LoadPreset(const std::string& nameOrFile, const Host::ParameterCatalog& catalog,
                        std::vector<std::string>& warnings) {
    if (!LooksLikeFile(nameOrFile)) {
        if (const Host::FactoryPreset* preset = Host::FindFactoryPreset(nameOrFile))
            return Understand(preset->json, nameOrFile, catalog, warnings);
        if (!std::filesystem::exists(nameOrFile))
            throw Failure(ExitCode::Usage, Host::UnknownFactoryPreset(nameOrFile) +
                                               " \"tesserae presets\" lists them all; a file of "
                                               "your own goes by its path.");
    }
    return Understand(ReadTextFile(nameOrFile), nameOrFile, catalog, warnings);
}

SoundChoice SoundChoice::Make(Host::Preset preset, const std::vector<std::string>& assignments,
                              const Host::ParameterCatalog& catalog) {
    SoundChoice sound{std::move(preset), {}, {}, {}};
    SpellRoutingsOut(sound.preset);
    sound.asFound = sound.preset;
    Host::PresentSettings settings = sound.Settings(catalog);
    std::vector<Assignment> others;
    for (const std::string& text : assignments) {
        Assignment assignment = Split(text);
        const std::optional<uint32_t> index = catalog.Resolve(assignment.name, settings);
        if (index && catalog.Decides(*index))
            Assign(sound, settings, assignment, catalog);
        else
            others.push_back(std::move(assignment));
    }
    for (const Assignment& assignment : others)
        Assign(sound, settings, assignment, catalog);
    return sound;
}

Host::PresentSettings SoundChoice::PresetSettings(const Host::ParameterCatalog& catalog) const {
    return SoundChoice{asFound, {}, {}, {}}.Settings(catalog);
}

Host::PresentSettings SoundChoice::Settings(const Host::ParameterCatalog& catalog) const {
    Host::PresentSettings settings(catalog);
    for (const auto* values : {&preset.parameters, &levers})
        for (const Host::ParameterValue& value : *values)
            settings.Put(value.index, value.position);
    return settings;
}

}  // namespace Quorvan::Tools
