#pragma once

#include <cstdint>
#include <string>

#include "host/parameters/ModulationNames.h"
#include "host/parameters/PresentSettings.h"

namespace Quorvan::Tools {

/// Whether a source of modulation moves a destination with these settings.
inline bool IsRouted(const Host::PresentSettings& settings, uint32_t source, uint32_t destination) {
    return settings.Position(Host::ActivatedIndex(source, destination)) > 0.5f &&
           Host::AmountOfPosition(settings.Position(Host::AmountIndex(source, destination))) !=
               0.0f;
}

/// Whether a source moves anything.
inline bool MovesAnything(const Host::PresentSettings& settings, uint32_t source) {
    for (uint32_t row = 0; row < Host::kModulationDestinations; ++row)
        if (IsRouted(settings, source, row))
            return true;
    return false;
}

/// Whether anything moves a destination.
inline bool IsMoved(const Host::PresentSettings& settings, uint32_t destination) {
    for (uint32_t source = 0; source < Host::kModulationSources; ++source)
        if (IsRouted(settings, source, destination))
            return true;
    return false;
}

/// Advice for a source that moves nothing: how to route it, as a sentence.
std::string RoutingAdvice(const Host::ParameterCatalog& catalog, uint32_t source);

}  // namespace Quorvan::Tools
