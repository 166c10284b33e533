#include "tools/commands/PresetSheet.h"

#include "host/parameters/ModulationNames.h"
#include "host/parameters/PresentSettings.h"
#include "host/parameters/Sentence.h"
#include "tools/support/Numbers.h"
#include "tools/support/TextTable.h"

namespace Quorvan::Tools {

namespace {

void PrintHead(const Host::Preset& preset, std::ostream& out) {
    out << Host::Visible(preset.name) << "\n";
    if (!preset.description.empty())
        out << Host::Visible(preset.description) << "\n";
    std::string facts;
    for (const std::string& tag : preset.tags)
        facts += (facts.empty() ? "Tags: " : ", ") + Host::Visible(tag);
    if (preset.tempo)
        facts += (facts.empty() ? "" : "; ") + Fixed(*preset.tempo, 0) + " BPM";
    if (!facts.empty())
        out << facts << "\n";
}

}  // namespace

void PrintPresetSheet(const Host::Preset& preset, const Host::ParameterCatalog& catalog,
                      std::ostream& out) {
    PrintHead(preset, out);
    Host::PresentSettings settings(catalog);
    for (const Host::ParameterValue& value : preset.parameters)
        settings.Put(value.index, value.position);
    TextTable sheet({"Setting", "Value", "Full name"});
    for (const Host::ParameterValue& value : preset.parameters)
        sheet.Add({catalog[value.index].title,
                   catalog.Text(value.index, value.position, settings.Texts()),
                   catalog[value.index].name});
    if (!preset.parameters.empty()) {
        out << "\n";
        sheet.Print(out);
    }
    TextTable routings({"Modulation", "Moves", "By"});
    for (const Host::Routing& routing : preset.routings)
        routings.Add({Host::SourceName(routing.source), Host::DestinationName(routing.destination),
                      Fixed(100.0 * static_cast<double>(routing.amount), 1) + " %"});
    if (!preset.routings.empty()) {
        out << "\n";
        routings.Print(out);
    }
}

}  // namespace Quorvan::Tools
