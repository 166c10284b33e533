#include "tools/commands/ParamsCommand.h"

#include <iostream>

#include <nlohmann/json.hpp>

#include "host/parameters/NumberText.h"
#include "host/parameters/Sentence.h"
#include "host/state/StateTransfer.h"
#include "processor/IProcessor.h"
#include "tools/render/SoundChoice.h"
#include "tools/support/Failure.h"
#include "tools/support/Numbers.h"
#include "tools/support/TextTable.h"

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

std::string RangeText(const Host::ParameterInfo& info) {
    constexpr size_t kLongest = 56;  // letters of a list of choices
    if (info.kind == Host::ParameterKind::Binary)
        return "";
    if (info.choices.empty())
        return Host::FormatNumber(info.minimum, info.unit) + " .. " +
               Host::FormatNumber(info.maximum, info.unit);
    std::string text;
    for (const std::string& choice : info.choices)
        text += (text.empty() ? "" : " | ") + choice;
    return text.size() <= kLongest ? text : text.substr(0, kLongest - 3) + "...";
}

std::string UnitText(const Host::ParameterInfo& info) {
    return info.kind == Host::ParameterKind::Continuous ? Host::SignOf(info.unit)
                                                        : KindText(info.kind);
}

Json RowJson(const Host::ParameterInfo& info, float position, const std::string& text) {
    Json json;
    json["index"] = info.index;
    json["name"] = info.name;
    json["group"] = info.group;
    json["label"] = info.label;
    json["kind"] = KindText(info.kind);
    json["role"] = RoleText(info.role);
    json["unit"] = Host::SignOf(info.unit);
    json["minimum"] = info.minimum;
    json["maximum"] = info.maximum;
    json["position"] = position;
    json["text"] = text;
    if (!info.choices.empty())
        json["choices"] = std::vector<std::string>(info.choices.begin(), info.choices.end());
    return json;
}

}  // namespace

ParamsCommand::ParamsCommand(CLI::App& program)
    : Command(program, "params",
              "List the parameters: index, full name, position, range, unit, "
              "value") {
    Options().add_option("filter", filter, "Only names that hold this text")->type_name("FILTER");
    Options()
        .add_option("--preset", preset, "Show the positions of this preset (default: init)")
        ->type_name("FILE|NAME");
    Options().add_flag("--json", asJson, "Print JSON");
}

bool ParamsCommand::Matches(const Host::ParameterInfo& info) const {
    const std::string wanted = Host::Lower(filter);
    if (Host::Lower(info.name).find(wanted) != std::string::npos)
        return true;
    // The matrix has seven cells for everything that can be modulated: only "X to Y" asks for
    // those.
    const bool isCell = info.name.starts_with("Modulations_");
    const std::string label = Host::Lower(info.group + " " + info.label);
    return (!isCell || wanted.find(" to ") != std::string::npos) &&
           label.find(wanted) != std::string::npos;
}

std::vector<ParamsCommand::Row> ParamsCommand::Collect(
    const Host::ParameterCatalog& catalog) const {
    std::vector<std::string> warnings;
    Host::Engine engine(0);
    Host::ApplyPreset(LoadPreset(preset, catalog, warnings), engine, catalog);
    for (const std::string& warning : warnings)
        std::cerr << "tesserae: " << warning << "\n";
    const auto context = Host::TextContext::Of(engine.GetProcessor());
    std::vector<Row> rows;
    for (const Host::ParameterInfo& info : catalog.All()) {
        if (!Matches(info))
            continue;
        const float position = engine.Position(info.index);
        rows.push_back({&info, position, catalog.Text(info.index, position, context)});
    }
    return rows;
}

ExitCode ParamsCommand::Run() {
    const Host::ParameterCatalog catalog;
    const std::vector<Row> rows = Collect(catalog);
    if (rows.empty())
        throw Failure(ExitCode::Usage, catalog.UnknownName(filter));
    if (asJson) {
        Json list = Json::array();
        for (const Row& row : rows)
            list.push_back(RowJson(*row.info, row.position, row.text));
        std::cout << list.dump(1, ' ', false, Json::error_handler_t::replace) << "\n";
        return Printed();
    }
    TextTable table({"Index", "Name", "Position", "Value", "Unit", "Range"});
    for (const Row& row : rows)
        table.Add({std::to_string(row.info->index), row.info->name,
                   Fixed(static_cast<double>(row.position), 4), row.text, UnitText(*row.info),
                   RangeText(*row.info)});
    table.Print(std::cout);
    return Printed();
}

}  // namespace Quorvan::Tools
