#pragma once

#include <string>
#include <vector>

#include "host/engine/Engine.h"
#include "host/parameters/ParameterCatalog.h"
#include "tools/commands/Command.h"
#include "tools/commands/ParameterTable.h"

namespace Quorvan::Tools {

/// "tesserae params": lists the processor's parameters.
class ParamsCommand final : public Command {
public:
    explicit ParamsCommand(CLI::App& program);
    ExitCode Run() override;

private:
    std::vector<ParameterRow> Collect(const Host::ParameterCatalog& catalog) const;
    std::string Filter() const;

    std::vector<std::string> words;  ///< of the filter
    std::string preset = "init";
    bool isWhole = false;
    bool asJson = false;
};

}  // namespace Quorvan::Tools
