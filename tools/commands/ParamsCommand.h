#pragma once

#include <string>
#include <vector>

#include "host/engine/Engine.h"
#include "host/parameters/ParameterCatalog.h"
#include "tools/commands/Command.h"

namespace Quorvan::Tools {

/// "tesserae params": lists the processor's parameters.
class ParamsCommand final : public Command {
public:
    explicit ParamsCommand(CLI::App& program);
    ExitCode Run() override;

private:
    /// One line of the list.
    struct Row {
        const Host::ParameterInfo* info;
        float position;
        std::string text;
    };

    std::vector<Row> Collect(const Host::ParameterCatalog& catalog) const;
    bool Matches(const Host::ParameterInfo& info) const;

    std::string filter;
    std::string preset = "init";
    bool asJson = false;
};

}  // namespace Quorvan::Tools
