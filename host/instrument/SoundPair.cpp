#include "host/instrument/SoundPair.h"

#include <map>

#include "host/parameters/ShellIndex.h"

namespace Quorvan::Host {

std::unique_ptr<MorphPlan> PlanMorph(const SoundPair& pair, const ParameterCatalog& catalog) {
    auto plan = std::make_unique<MorphPlan>();
    if (!pair.kept[0] || !pair.kept[1])
        return plan;
    std::map<uint32_t, float> other;
    for (const ParameterValue& value : pair.kept[1]->parameters)
        other[value.index] = value.position;
    for (const ParameterValue& value : pair.kept[0]->parameters) {
        const auto found = other.find(value.index);
        const float a = value.position;
        const float b = found != other.end() ? found->second : catalog[value.index].defaultPosition;
        if (a != b && value.index != kBypassIndex)
            plan->steps.push_back(
                {value.index, a, b, catalog[value.index].kind != ParameterKind::Continuous});
    }
    return plan;
}

}  // namespace Quorvan::Host
