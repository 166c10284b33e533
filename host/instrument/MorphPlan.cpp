#include "host/instrument/MorphPlan.h"

#include "host/parameters/ShellIndex.h"

namespace Quorvan::Host {

std::unique_ptr<MorphPlan> PlanMorph(uint32_t played, const State& other,
                                     const ParameterCatalog& catalog) {
    auto plan = std::make_unique<MorphPlan>();
    plan->played = played;
    plan->steps.reserve(other.parameters.size());
    for (const ParameterValue& value : other.parameters)
        if (value.index != kBypassIndex)
            plan->steps.push_back({value.index, value.position,
                                   catalog[value.index].kind != ParameterKind::Continuous});
    return plan;
}

}  // namespace Quorvan::Host
