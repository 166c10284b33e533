#pragma once

#include <string>
#include <vector>

#include "host/engine/Engine.h"
#include "host/parameters/ParameterCatalog.h"
#include "tools/commands/Command.h"

namespace Quorvan::Tools {

/// "tesserae destinations": lists what modulation can move, and which parameter each row moves
/// under a preset.
class DestinationsCommand final : public Command {
public:
    explicit DestinationsCommand(CLI::App& program);
    ExitCode Run() override;

private:
    /// A source at work on a row.
    struct Mover {
        uint32_t source;
        float amount;
    };
    /// One line of the list.
    struct Row {
        uint32_t row;  ///< from 0
        const Host::ParameterInfo* parameter;
        std::vector<Mover> movers;
    };

    std::vector<Row> Collect(const Host::ParameterCatalog& catalog) const;
    void PrintJson(const std::vector<Row>& rows) const;
    void PrintTable(const std::vector<Row>& rows) const;

    std::string preset = "init";
    bool asJson = false;
};

}  // namespace Quorvan::Tools
