#include "tools/commands/ParamsCommand.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include <nlohmann/json.hpp>

#include "host/state/StateTransfer.h"
#include "tools/commands/ParameterSearch.h"
#include "tools/render/SoundChoice.h"
#include "tools/support/Failure.h"

namespace Quorvan::Tools {

namespace {

using Json = nlohmann::ordered_json;

const char* KindText(Host::ParameterKind kind) {
    switch (kind) {
        case Host::ParameterKind::Continuous:
            return "continuous";
        case Host::ParameterKind::Choice:
            return "choice";
        case Host::ParameterKind::Switch:
            return "switch";
        case Host::ParameterKind::Binary:
            return "binary";
    }
    return "";
}

const char* RoleText(Host::ParameterRole role) {
    switch (role) {
        case Host::ParameterRole::Setting:
            return "setting";
        case Host::ParameterRole::Control:
            return "control";
        case Host::ParameterRole::Output:
            return "output";
        case Host::ParameterRole::Driven:
            return "driven";
    }
    return "";
}

Json RowJson(const ParameterRow& row) {
    const Host::ParameterInfo& info = *row.info;
    Json json;
    json["index"] = info.index;
    json["name"] = info.name;
    json["group"] = info.group;
    json["label"] = info.label;
    json["title"] = info.title;
    if (!row.commonName.empty()) {
        json["commonName"] = row.commonName;
        json["inForce"] = row.inForce;
    }
    json["kind"] = KindText(info.kind);
    json["role"] = RoleText(info.role);
    json["unit"] = Host::SignOf(info.unit);
    json["minimum"] = info.minimum;
    json["maximum"] = info.maximum;
    json["position"] = row.position;
    json["text"] = row.text;
    if (!info.choices.empty())
        json["choices"] = std::vector<std::string>(info.choices.begin(), info.choices.end());
    return json;
}

/// Columns of the terminal, 0 where the list goes elsewhere.
size_t Columns() {
    if (const char* const told = std::getenv("COLUMNS"))
        return std::strtoul(told, nullptr, 10);
    winsize size{};
    return isatty(STDOUT_FILENO) != 0 && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col
                                                                                      : 0;
}

}  // namespace

ParamsCommand::ParamsCommand(CLI::App& program)
    : Command(program, "params",
              "List the parameters by group: label, value, range with unit, index, full name") {
    Options()
        .add_option("filter", words, "Only those whose name or full name holds this text")
        ->type_name("FILTER");
    Options()
        .add_option("--preset", preset, "Show the values of this preset (default: init)")
        ->type_name("FILE|NAME");
    Options().add_flag("--all", isWhole,
                       "Long lists of choices whole, as where FILTER is the name of one parameter");
    Options().add_flag("--json", asJson, "Print JSON, with positions");
}

std::string ParamsCommand::Filter() const {
    std::string filter;
    for (const std::string& word : words)
        filter += (filter.empty() ? "" : " ") + word;
    return filter;
}

std::vector<ParameterRow> ParamsCommand::Collect(const Host::ParameterCatalog& catalog) const {
    std::vector<std::string> warnings;
    Host::Engine engine(0);
    Host::ApplyPreset(LoadPreset(preset, catalog, warnings), engine, catalog);
    for (const std::string& warning : warnings)
        std::cerr << "tesserae: " << warning << "\n";
    const Host::PresentSettings settings(catalog,
                                         [&](uint32_t index) { return engine.Position(index); });
    const ParameterSearch search(Filter(), catalog, settings);
    std::vector<ParameterRow> rows;
    for (const Host::ParameterInfo& info : catalog.All())
        if (const std::optional<int> rank = search.Rank(info)) {
            const float position = settings.Position(info.index);
            rows.push_back({&info, position, catalog.Text(info.index, position, settings.Texts()),
                            *rank, catalog.CommonName(info.index),
                            catalog.IsInForce(info.index, settings)});
        }
    return rows;
}

ExitCode ParamsCommand::Run() {
    const Host::ParameterCatalog catalog;
    std::vector<ParameterRow> rows = Collect(catalog);
    if (rows.empty())
        throw Failure(ExitCode::Usage, catalog.UnknownName(Filter()));
    if (!asJson) {
        PrintParameters(std::cout, std::move(rows), Columns(), isWhole);
        return ExitCode::Success;
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const ParameterRow& a, const ParameterRow& b) { return a.rank < b.rank; });
    Json list = Json::array();
    for (const ParameterRow& row : rows)
        list.push_back(RowJson(row));
    std::cout << list.dump(1, ' ', false, Json::error_handler_t::replace) << "\n";
    return ExitCode::Success;
}

}  // namespace Quorvan::Tools
