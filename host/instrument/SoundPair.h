#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "host/state/Preset.h"

namespace Quorvan::Host {

/// Two sounds to compare, as a project keeps them.
struct SoundPair {
    /// A, B. Both or none: until something is kept both are the same.
    std::array<std::optional<State>, 2> kept;
    uint32_t played = 0;  ///< 0: A, 1: B
    /// Preset that the sound which is not played came from, and whether it is another one now.
    std::string otherPreset;
    bool otherModified = false;

    bool operator==(const SoundPair&) const = default;
};

}  // namespace Quorvan::Host
