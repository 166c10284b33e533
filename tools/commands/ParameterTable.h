#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "host/parameters/ParameterInfo.h"

namespace Quorvan::Tools {

/// One parameter of a list.
struct ParameterRow {
    const Host::ParameterInfo* info = nullptr;
    float position = 0.0f;
    std::string text;        ///< what the position shows as
    int rank = 0;            ///< how well it fits what was looked for, 0 best
    std::string commonName;  ///< the name that it shares with others, or nothing
    bool inForce = true;     ///< whether that name means this one
};

/// Range and unit, or the choices, with at most so many letters.
std::string RangeText(const Host::ParameterInfo& info, size_t longest);

/// Prints the rows by group: first the group of the best one, and in it the best ones. Lines fit
/// columns, where each takes two if need be; 0 is as wide as it gets. Long lists of choices are cut
/// to fit; with whole, or where one parameter is meant by its name, all stand on a line below.
void PrintParameters(std::ostream& out, std::vector<ParameterRow> rows, size_t columns, bool whole);

}  // namespace Quorvan::Tools
