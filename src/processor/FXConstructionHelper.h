#pragma once

#include <string>
#include <utility>

#include "framework/ModuleContainer.h"

namespace Quorvan::Processor::details {

/// Builds the container base of an effect: a tree with two inputs and two outputs. N and B are the
/// capacities of the effect's change lists.
template <uint32_t N, uint32_t B, class... M>
class FXConstructionHelper : public dsp::ModuleContainer<M...> {
public:
    template <class... ModuleArguments>
    FXConstructionHelper(std::string treeName, const dsp::ParameterTable& ownParameters,
                         ModuleArguments&&... moduleArguments)
        : dsp::ModuleContainer<M...>(std::move(treeName), 2, 2, ownParameters,
                                     std::forward<ModuleArguments>(moduleArguments)...) {}
};

}  // namespace Quorvan::Processor::details
