#include "tools/commands/DestinationsCommand.h"

#include <cmath>
#include <iostream>

#include <nlohmann/json.hpp>

#include "host/parameters/ModulationNames.h"
#include "host/state/StateTransfer.h"
#include "processor/IProcessor.h"
#include "tools/render/SoundChoice.h"
#include "tools/support/Numbers.h"
#include "tools/support/TextTable.h"

namespace Quorvan::Tools {

DestinationsCommand::DestinationsCommand(CLI::App& program)
    : Command(program, "destinations",
              "List what modulation can move: number, name, and the parameter that it moves now") {
    Options()
        .add_option("--preset", preset, "Under this preset (default: init)")
        ->type_name("FILE|NAME");
    Options().add_flag("--json", asJson, "Print JSON");
}

std::vector<DestinationsCommand::Row> DestinationsCommand::Collect(
    const Host::ParameterCatalog& catalog) const {
    std::vector<std::string> warnings;
    Host::Engine engine(0);
    engine.Prepare({.sampleRate = 48000.0, .sendsFeedback = false});
    Host::ApplyPreset(LoadPreset(preset, catalog, warnings), engine, catalog);
    // Some modes only follow from their settings when a block runs.
    engine.Idle(2);
    for (const std::string& warning : warnings)
        std::cerr << "tesserae: " << warning << "\n";
    std::vector<Row> rows;
    for (uint32_t row = 0; row < Host::kModulationDestinations; ++row) {
        rows.push_back({row, &catalog[Host::TargetOfDestination(engine.GetProcessor(), row)], {}});
        for (uint32_t source = 0; source < Host::kModulationSources; ++source) {
            const float amount =
                Host::AmountOfPosition(engine.Position(Host::AmountIndex(source, row)));
            if (amount != 0.0f && engine.Position(Host::ActivatedIndex(source, row)) > 0.5f)
                rows.back().movers.push_back({source, amount});
        }
    }
    return rows;
}

void DestinationsCommand::PrintJson(const std::vector<Row>& rows) const {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const Row& row : rows) {
        nlohmann::ordered_json sources = nlohmann::ordered_json::array();
        for (const Mover& mover : row.movers)
            sources.push_back({{"source", Host::SourceName(mover.source)},
                               {"amount", std::round(mover.amount * 1.0e4f) / 1.0e4}});
        list.push_back({{"number", row.row + 1},
                        {"name", Host::DestinationName(row.row)},
                        {"index", row.parameter->index},
                        {"parameter", row.parameter->name},
                        {"group", row.parameter->group},
                        {"label", row.parameter->label},
                        {"title", row.parameter->title},
                        {"sources", std::move(sources)}});
    }
    std::cout << list.dump(1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << "\n";
}

void DestinationsCommand::PrintTable(const std::vector<Row>& rows) const {
    TextTable table({"Number", "Name", "Moves now", "Index", "Parameter", "Moved by"});
    for (const Row& row : rows) {
        std::string movers;
        for (const Mover& mover : row.movers)
            movers += (movers.empty() ? "" : ", ") + Host::SourceName(mover.source) + " " +
                      (mover.amount > 0.0f ? "+" : "") +
                      Fixed(static_cast<double>(mover.amount), 2);
        table.Add({std::to_string(row.row + 1), Host::DestinationName(row.row),
                   row.parameter->title, std::to_string(row.parameter->index), row.parameter->name,
                   movers});
    }
    table.Print(std::cout);
}

ExitCode DestinationsCommand::Run() {
    const Host::ParameterCatalog catalog;
    const std::vector<Row> rows = Collect(catalog);
    asJson ? PrintJson(rows) : PrintTable(rows);
    return ExitCode::Success;
}

}  // namespace Quorvan::Tools
