#pragma once

#include <vector>

#include <nlohmann/json.hpp>

#include "host/instrument/MidiMap.h"
#include "host/parameters/ParameterCatalog.h"
#include "host/state/Issue.h"

namespace Quorvan::Host {

/// The list "midi" of a state (InstrumentState.h).
nlohmann::ordered_json MidiMapJson(const MidiMap& map, const ParameterCatalog& catalog);
/// The way back. What makes no sense becomes MidiMap::foreign, with a warning each.
MidiMap MidiMapFrom(const nlohmann::ordered_json& list, const ParameterCatalog& catalog,
                    std::vector<Issue>& issues);

}  // namespace Quorvan::Host
