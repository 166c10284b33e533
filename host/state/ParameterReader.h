#pragma once

#include <vector>

#include "host/engine/Engine.h"
#include "host/parameters/ParameterCatalog.h"
#include "host/state/JsonReader.h"

namespace Quorvan::Host {

/// Which parameters a file may hold.
enum class ParameterScope : uint8_t {
    Sound,   ///< settings
    Project  ///< settings and the levers of the shell
};

/// Whether a file of that scope may put a parameter anywhere.
bool IsStored(const ParameterInfo& info, ParameterScope scope);

/// The member "parameters" of an open reader, in index order. What cannot be used is left out, with
/// a warning.
std::vector<ParameterValue> ReadParameters(JsonReader& reader, const ParameterCatalog& catalog,
                                           ParameterScope scope);

}  // namespace Quorvan::Host
