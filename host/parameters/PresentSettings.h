#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "host/parameters/ParameterCatalog.h"

namespace Quorvan::Host {

/// Where the parameters stand while names and texts are read. A name that several parameters share,
/// such as "Grain Size", means the one that these settings put in force, and a pitch counts in
/// their scale.
class PresentSettings {
public:
    /// Those of a new processor. The catalog has to outlive them.
    explicit PresentSettings(const ParameterCatalog& catalog);
    /// Those that positionOf tells of every index.
    PresentSettings(const ParameterCatalog& catalog,
                    const std::function<float(uint32_t index)>& positionOf);

    /// index below the catalog's Count.
    void Put(uint32_t index, float position) { positions[index] = position; }
    float Position(uint32_t index) const { return positions[index]; }
    /// The choice that a stepped parameter stands at; 0 or 1 of a switch.
    uint32_t Choice(uint32_t index) const;
    /// How texts read with them.
    TextContext Texts() const;

private:
    const ParameterCatalog* catalog;
    std::vector<float> positions;  ///< by index
};

}  // namespace Quorvan::Host
