#pragma once

#include <vector>

#include <nlohmann/json.hpp>

#include "host/engine/Engine.h"
#include "host/parameters/ParameterCatalog.h"

namespace Quorvan::Host {

/// How a file shows where a parameter stands.
enum class PositionStyle : uint8_t {
    Numbers,  ///< always as a position
    Texts     ///< as the text that people read, where exactly the position comes back from it
};

/// number with as few digits as tell it from its neighbours: 0.1f as 0.1.
double Shortest(float number);

/// The member "parameters" of a file, in the order of values: full names and positions that
/// ReadParameters takes back to the bit.
nlohmann::ordered_json ParametersJson(const std::vector<ParameterValue>& values,
                                      const ParameterCatalog& catalog, PositionStyle style);

}  // namespace Quorvan::Host
