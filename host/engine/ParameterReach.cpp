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

double ParameterReach::ValueMoved(std::string_view name, float move) const {
    const std::optional<uint32_t> index = catalog.Find(name);
    if (!index)
        return 0.0;
    const float position = std::clamp(engine.Position(*index) + move, 0.0f, 1.0f);
    return catalog.Value(*index, position);
}

float ParameterReach::TravelOf(uint32_t destination) const {
    float travel = 0.0f;
    for (uint32_t source = 0; source < kModulationSources; ++source) {
        if (engine.Position(ActivatedIndex(source, destination)) > 0.5f)
            travel += std::abs(AmountOfPosition(engine.Position(AmountIndex(source, destination))));
    }
    return travel;
}

}  // namespace Quorvan::Host
