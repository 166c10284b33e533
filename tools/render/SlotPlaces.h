#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "host/parameters/PresentSettings.h"

namespace Quorvan::Tools {

/// Where the two effect slots sit: the second one never ahead of the first.
class SlotPlaces {
public:
    static constexpr uint32_t kLoop = 2;  ///< the farthest ahead; 1 on the wet signal, 0 behind

    explicit SlotPlaces(const Host::ParameterCatalog& parameters);

    /// Where a slot, 0 or 1, really sits.
    uint32_t Place(uint32_t slot, const Host::PresentSettings& settings) const;
    /// For the position of a slot why it is without effect; nothing where it has one, and for all
    /// other parameters.
    std::optional<std::string> Missing(uint32_t index, const Host::PresentSettings& settings) const;
    /// Whether a parameter is the position of a slot.
    bool Decides(uint32_t index) const { return index == positions[0] || index == positions[1]; }

private:
    const Host::ParameterCatalog& catalog;
    std::array<uint32_t, 2> types, positions;  ///< indices
};

}  // namespace Quorvan::Tools
