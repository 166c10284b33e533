#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/parameters/DescriptionTables.h"

namespace Quorvan::Host {

/// What the tables say of one parameter of the tree.
struct Description {
    std::string group;
    std::string label;
    ParameterForm form;
    ParameterRole role = ParameterRole::Setting;
};

/// Finds a full name in the tables; nothing where no table has it. The cells of the modulation
/// matrix are in no table.
std::optional<Description> DescribeParameter(std::string_view fullName);

}  // namespace Quorvan::Host
