#pragma once

#include <array>
#include <memory>
#include <optional>

#include "host/instrument/MorphPlan.h"
#include "host/parameters/ParameterCatalog.h"
#include "host/state/Preset.h"

namespace Quorvan::Host {

/// Two sounds to compare, A and B, of which one is played and the other kept. Until something is
/// kept both are the same.
struct SoundPair {
    std::array<std::optional<State>, 2> kept;  ///< A, B; the played one's may be out of date
    uint32_t played = 0;                       ///< 0: A, 1: B

    bool operator==(const SoundPair&) const = default;
};

/// The settings in which two states differ, as steps from a to b; nothing where one is missing.
std::unique_ptr<MorphPlan> PlanMorph(const SoundPair& pair, const ParameterCatalog& catalog);

}  // namespace Quorvan::Host
