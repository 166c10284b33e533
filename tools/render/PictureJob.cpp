#include "tools/render/PictureJob.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

#include "host/parameters/ModulationNames.h"
#include "tools/picture/Picture.h"
#include "tools/picture/PictureSetup.h"
#include "tools/render/SlotText.h"

namespace Quorvan::Tools {

PictureJob::PictureJob(Host::Engine& source, const RenderSettings& wanted,
                       const Host::ParameterCatalog& parameters, const TempoMap& tempos)
    : engine(source),
      settings(wanted),
      catalog(parameters),
      song(tempos),
      data(source, SectionOf(wanted, tempos)) {}

void PictureJob::NoteRoutes() {
    std::vector<uint32_t> routed = RoutedSources(engine);
    std::vector<uint32_t> both;
    std::set_union(routed.begin(), routed.end(), data.sources.begin(), data.sources.end(),
                   std::back_inserter(both));
    data.sources = std::move(both);
    for (std::string& text : SlotTexts(engine, catalog))
        if (std::find(effects.begin(), effects.end(), text) == effects.end())
            effects.push_back(std::move(text));
}

std::optional<std::string> PictureJob::Draw(const Summary& summary, const ModulationLog& modulation,
                                            AtomicOutput& file) {
    Caption(data, settings, summary, song);
    data.modulation = &modulation;
    if (settings.pictureModulation && data.sources.empty()) {
        data.sources.resize(Host::kModulationSources);
        std::iota(data.sources.begin(), data.sources.end(), 0u);
    }
    data.effects = JoinSlotTexts(effects);
    DrawPicture(data, file);
    return EmptyPictureWarning(data);
}

}  // namespace Quorvan::Tools
