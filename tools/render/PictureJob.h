#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/parameters/ParameterCatalog.h"
#include "tools/picture/PictureData.h"
#include "tools/render/RenderSettings.h"
#include "tools/render/Summary.h"
#include "tools/support/AtomicOutput.h"

namespace Quorvan::Tools {

/// The picture of a render: gathers what it shows while that runs, and draws it behind its end.
class PictureJob {
public:
    /// All of them have to outlive it. Throws Failure where the section that is asked for is none.
    PictureJob(Host::Engine& source, const RenderSettings& wanted,
               const Host::ParameterCatalog& parameters, const TempoMap& tempos);

    /// What has to hear the render.
    RenderSink& Sink() { return data; }
    /// Sources that are routed and effects that are heard now join those that the picture shows.
    void NoteRoutes();
    /// Answers a warning where there is nothing to see.
    std::optional<std::string> Draw(const Summary& summary, const ModulationLog& modulation,
                                    AtomicOutput& file);

private:
    Host::Engine& engine;
    const RenderSettings& settings;
    const Host::ParameterCatalog& catalog;
    const TempoMap& song;
    PictureData data;
    std::vector<std::string> effects;  ///< in order of appearance
};

}  // namespace Quorvan::Tools
