#pragma once

#include <cstdint>
#include <string_view>

#include "host/engine/Engine.h"
#include "host/parameters/ParameterCatalog.h"

namespace Quorvan::Host {

/// The parameters of an engine as numbers: as they stand, and as far up as modulation can move
/// them.
class ParameterReach {
public:
    ParameterReach(const Engine& readEngine, const ParameterCatalog& readCatalog)
        : engine(readEngine), catalog(readCatalog) {}

    /// The number that the text of a parameter shows (ParameterCatalog::Value).
    double Value(std::string_view name) const;
    /// The choice or step.
    uint32_t Choice(std::string_view name) const { return static_cast<uint32_t>(Value(name)); }
    bool IsOn(std::string_view name) const { return Value(name) > 0.5; }
    /// The same at the upper end of what a destination's routings can make of it.
    double Highest(std::string_view name, uint32_t destination) const;
    uint32_t HighestChoice(std::string_view name, uint32_t destination) const {
        return static_cast<uint32_t>(Highest(name, destination));
    }
    /// The position 0..1 at that end.
    double HighestPosition(std::string_view name, uint32_t destination) const;
    /// And at the lower end.
    double Lowest(std::string_view name, uint32_t destination) const;

    /// Whether a source moves a destination.
    bool IsRouted(uint32_t source, uint32_t destination) const;

private:
    double ValueMoved(std::string_view name, float move) const;
    float PositionMoved(uint32_t index, float move) const;
    /// Sum of the routings to a destination, all taken as going one way.
    float TravelOf(uint32_t destination) const;

    const Engine& engine;
    const ParameterCatalog& catalog;
};

}  // namespace Quorvan::Host
