#pragma once

#include <cstdint>
#include <string>

#include "host/parameters/DescriptionTables.h"

namespace Quorvan::Host {

/// What people are told of one parameter.
struct Description {
    std::string group;
    std::string label;
    ParameterForm form;
    ParameterRole role = ParameterRole::Setting;
};

/// What the tables say of the parameter with this index and full name; a group "Other" where they
/// do not know it.
Description DescribeParameter(uint32_t index, const std::string& fullName);

}  // namespace Quorvan::Host
