#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/engine/Engine.h"

namespace Quorvan::Host {

/// A source of modulation at work on a destination (ModulationNames.h).
struct Routing {
    uint32_t source = 0;
    uint32_t destination = 0;
    float amount = 0.0f;  ///< -1..1, in fractions of the destination's travel

    bool operator==(const Routing&) const = default;
};

/// A sound for people to choose. It is complete: every setting that it does not name has the
/// position of a new processor. It leaves the shell's levers, such as "Bypass", alone.
struct Preset {
    std::string name;
    std::string description;
    std::vector<std::string> tags;
    std::optional<double> tempo;             ///< beats per minute that it was made at, a hint
    std::vector<ParameterValue> parameters;  ///< settings only, in index order
    std::vector<Routing> routings;           ///< over and above those among parameters

    bool operator==(const Preset&) const = default;
};

/// All that a project keeps of a processor: every setting, and "Bypass". Likewise complete.
struct State {
    std::vector<ParameterValue> parameters;  ///< in index order

    bool operator==(const State&) const = default;
};

}  // namespace Quorvan::Host
