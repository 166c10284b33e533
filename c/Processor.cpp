#include "c/Processor.h"

#include "host/parameters/SharedCatalog.h"

namespace {

/// As much as the processor's display ever holds, so that reading it takes no memory.
constexpr size_t kShownGrains = 258;
constexpr size_t kShownMarkers = 200;

}  // namespace

tesserae_processor::tesserae_processor(std::optional<uint64_t> seed)
    : catalog(Quorvan::Host::SharedCatalog()), engine(seed) {
    snapshot.grains.reserve(kShownGrains);
    snapshot.markers.reserve(kShownMarkers);
    engine.AddListener(modulation);
}
