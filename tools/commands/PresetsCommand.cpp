#include "tools/commands/PresetsCommand.h"

#include <iostream>

#include <nlohmann/json.hpp>

#include "host/parameters/ParameterCatalog.h"
#include "host/state/PresetFormat.h"
#include "presets/FactoryPresets.h"
#include "tools/commands/PresetSheet.h"
#include "tools/render/SoundChoice.h"
#include "tools/support/Numbers.h"
#include "tools/support/TextTable.h"

namespace Quorvan::Tools {

namespace {

std::string Joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : ", ") + word;
    return text;
}

}  // namespace

PresetsCommand::PresetsCommand(CLI::App& program)
    : Command(program, "presets", "List the factory presets, or show one") {
    Options()
        .add_option("name", name, "Show the settings of this preset, a factory one or a file")
        ->type_name("NAME");
    Options().add_flag("--json", asJson,
                       "Print the list as JSON; with a name, the preset's file, a start for one of "
                       "your own");
}

ExitCode PresetsCommand::PrintOne() const {
    const Host::ParameterCatalog catalog;
    std::vector<std::string> warnings;
    const Host::Preset preset = LoadPreset(name, catalog, warnings);
    if (!asJson)
        PrintPresetSheet(preset, catalog, std::cout);
    else if (const Host::FactoryPreset* const factory = Host::FindFactoryPreset(name))
        std::cout << factory->json;
    else
        std::cout << Host::WritePreset(preset, catalog);
    for (const std::string& warning : warnings)
        std::cerr << "tesserae: " << warning << "\n";
    return ExitCode::Success;
}

ExitCode PresetsCommand::Run() {
    if (!name.empty())
        return PrintOne();
    const Host::ParameterCatalog catalog;
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    TextTable table({"Name", "Tempo", "Tags", "Description"});
    for (const Host::FactoryPreset& factory : Host::FactoryPresets()) {
        std::vector<std::string> warnings;
        const std::string id(factory.id);
        const Host::Preset preset = LoadPreset(id, catalog, warnings);
        table.Add({id, preset.tempo ? Fixed(*preset.tempo, 0) : "", Joined(preset.tags),
                   preset.description});
        nlohmann::ordered_json entry{{"id", id},
                                     {"name", preset.name},
                                     {"description", preset.description},
                                     {"tags", preset.tags}};
        if (preset.tempo)
            entry["tempo"] = *preset.tempo;
        list.push_back(std::move(entry));
    }
    if (asJson)
        std::cout << list.dump(2) << "\n";
    else
        table.Print(std::cout);
    return ExitCode::Success;
}

}  // namespace Quorvan::Tools
