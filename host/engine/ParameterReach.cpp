#include "host/engine/ParameterReach.h"

#include <algorithm>
#include <cmath>

#include "host/parameters/ModulationNames.h"

namespace Quorvan::Host {

double ParameterReach::Value(std::string_view name) const { return ValueMoved(name, 0.0f); }

double ParameterReach::Highest(std::string_view name, uint32_t destination) const {
    return ValueMoved(name, TravelOf(destination));
}

double ParameterReach::Lowest(std::string_view name, uint32_t destination) const {
    return ValueMoved(name, -TravelOf(destination));
}

double ParameterReach::HighestPosition(std::string_view name, uint32_t destination) const {
    const std::optional<uint32_t> index = catalog.Find(name);
    return index ? PositionMoved(*index, TravelOf(destination)) : 0.0;
}

double ParameterReach::ValueMoved(std::string_view name, float move) const {
    const std::optional<uint32_t> index = catalog.Find(name);
    return index ? catalog.Value(*index, PositionMoved(*index, move)) : 0.0;
}

float ParameterReach::PositionMoved(uint32_t index, float move) const {
    return std::clamp(engine.Position(index) + move, 0.0f, 1.0f);
}

bool ParameterReach::IsRouted(uint32_t source, uint32_t destination) const {
    return engine.Position(ActivatedIndex(source, destination)) > 0.5f &&
           AmountOfPosition(engine.Position(AmountIndex(source, destination))) != 0.0f;
}

float ParameterReach::TravelOf(uint32_t destination) const {
    float travel = 0.0f;
    for (uint32_t source = 0; source < kModulationSources; ++source) {
        if (IsRouted(source, destination))
            travel += std::abs(AmountOfPosition(engine.Position(AmountIndex(source, destination))));
    }
    return travel;
}

}  // namespace Quorvan::Host
