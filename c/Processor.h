#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "c/ErrorText.h"
#include "c/ModulationWatch.h"
#include "host/engine/DisplaySnapshot.h"
#include "host/engine/Engine.h"
#include "host/parameters/ParameterCatalog.h"

/// What the C face's handle stands for: an engine, and all that is handed out in its name.
struct tesserae_processor {
    explicit tesserae_processor(std::optional<uint64_t> seed);

    const Quorvan::Host::ParameterCatalog& catalog;
    Quorvan::Host::Engine engine;
    mutable Quorvan::C::ErrorText error;
    bool prepared = false;

    std::optional<double> presetTempo;  ///< of the last preset that was loaded
    std::vector<std::string> warnings;  ///< of the last loading
    std::string saved;                  ///< what the last saving handed out
    Quorvan::Host::DisplaySnapshot snapshot;
    Quorvan::C::ModulationWatch modulation;
};
