#include "tools/controltable/Tables.h"

#include <optional>

#include "host/instrument/Instrument.h"
#include "host/parameters/PresentSettings.h"
#include "host/parameters/SharedCatalog.h"
#include "host/state/PresetFormat.h"
#include "plugins/ui/help/HelpTable.h"
#include "presets/FactoryPresets.h"

namespace Quorvan {

namespace {

std::string Row(std::initializer_list<std::string> cells) {
    std::string row;
    for (const std::string& cell : cells)
        row += "| " + cell + " ";
    return row + "|\n";
}

/// The parameter that a name of the help table stands for; of several alike the first.
std::optional<uint32_t> IndexOf(std::string_view title) {
    const Host::ParameterCatalog& catalog = Host::SharedCatalog();
    const Host::PresentSettings settings(catalog);
    const std::string name(title);
    std::string numbered = name;
    if (name.starts_with("Function "))
        numbered.insert(std::string_view("Function ").size(), "1 ");
    for (const std::string& one : {name, "FX1 " + name, numbered, numbered + " 1 Level",
                                   name + " 1 Value", name + " 1 Multiplier"})
        if (const auto index = catalog.Resolve(one, settings))
            return index;
    return {};
}

/// "0.0 % to 100.0 %", or the choices.
std::string RangeOf(std::string_view title) {
    constexpr size_t kMostChoices = 4;
    const auto index = IndexOf(title);
    if (!index)
        return "A to B";  // "Morph" is no parameter
    const Host::ParameterCatalog& catalog = Host::SharedCatalog();
    const auto& choices = catalog[*index].choices;
    if (choices.size() > kMostChoices)
        return choices.front() + " to " + choices.back();
    if (choices.empty())
        return catalog.Text(*index, 0.0f, {}) + " to " + catalog.Text(*index, 1.0f, {});
    std::string range;
    for (const std::string& choice : choices)
        range += (range.empty() ? "" : ", ") + choice;
    return range;
}

}  // namespace

std::string ControlTable() {
    Host::Instrument instrument(Host::SharedCatalog());
    instrument.LoadPreset(
        *Host::ReadPreset(Host::FactoryPresets().front().json, Host::SharedCatalog()).value);
    std::string table =
        "| id | control | group | from | to | at first |\n| --- | --- | --- | --- | --- | --- |\n";
    for (const Host::HostControl& control : Host::HostControls()) {
        const auto text = [&](float position) {
            return instrument.ControlText(control.id, position);
        };
        table +=
            Row({std::to_string(control.id), std::string(control.name), std::string(control.group),
                 text(0.0f), text(1.0f), text(instrument.ControlPosition(control.id))});
    }
    return table;
}

std::string HelpOnControls() {
    std::string tables;
    for (const Ui::HelpGroup& group : Ui::HelpTable()) {
        tables += "\n## " + std::string(group.title) +
                  "\n\n| control | what it does | range |\n| --- | --- | --- |\n";
        for (const Ui::HelpEntry& entry : group.entries)
            tables += Row({"**" + std::string(entry.Title()) + "**", std::string(entry.sentence),
                           RangeOf(entry.Title())});
    }
    return tables + "\n";
}

std::string HelpOnTheWindow() {
    std::string tables;
    for (const Ui::HelpGroup& group : Ui::HelpOnViews()) {
        tables += "\n## " + std::string(group.title) +
                  "\n\n| on the window | what it shows and does |\n| --- | --- |\n";
        for (const Ui::HelpEntry& entry : group.entries)
            tables += Row({"**" + std::string(entry.Title()) + "**", std::string(entry.sentence)});
    }
    return tables + "\n";
}

}  // namespace Quorvan
