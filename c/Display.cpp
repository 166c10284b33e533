#include <algorithm>

#include "c/CallerText.h"
#include "c/Guard.h"
#include "host/parameters/ModulationNames.h"
#include "host/parameters/ShellIndex.h"
#include "processor/IProcessor.h"

using namespace Quorvan;
using namespace Quorvan::C;

static_assert(TESSERAE_SOURCES == Host::kModulationSources);
static_assert(TESSERAE_DESTINATIONS == Host::kModulationDestinations);

namespace {

tesserae_display Shown(const tesserae_processor& processor, size_t size) {
    const Host::DisplaySnapshot& snapshot = processor.snapshot;
    tesserae_display display{};
    display.size = size;
    display.tape_frames = snapshot.tapeLength;
    display.write_frame = snapshot.writePosition;
    display.play_frame = snapshot.playPosition;
    display.grains_started = snapshot.grainsStarted;
    display.grains_ended = snapshot.grainsEnded;
    display.grains = snapshot.grains.data();
    display.grain_count = static_cast<uint32_t>(snapshot.grains.size());
    display.markers = snapshot.markers.data();
    display.marker_count = static_cast<uint32_t>(snapshot.markers.size());
    display.tape = snapshot.tape.empty() ? nullptr : snapshot.tape.data();
    display.level_left = processor.engine.Position(Processor::ModuleIndex::kMasterVuL);
    display.level_right = processor.engine.Position(Processor::ModuleIndex::kMasterVuR);
    std::copy(processor.modulation.sources.begin(), processor.modulation.sources.end(),
              display.sources);
    std::copy(processor.modulation.destinations.begin(), processor.modulation.destinations.end(),
              display.destinations);
    return display;
}

}  // namespace

tesserae_result tesserae_watch(tesserae_processor* processor, int on) {
    return tesserae_set(processor, Host::kGuiVisibleIndex, on != 0 ? 1.0f : 0.0f);
}

tesserae_result tesserae_read_display(tesserae_processor* processor, int with_tape,
                                      tesserae_display* display) {
    return WithPrepared(processor, [=] {
        if (display == nullptr)
            return FailForNull(processor, "display");
        if (display->size < sizeof(tesserae_display))
            return FailForSize(processor);
        if (!processor->snapshot.Read(processor->engine.GetProcessor(), with_tape != 0))
            return Fail(processor, TESSERAE_BUSY,
                        "Somebody else is reading the display; try again after the next block.");
        *display = Shown(*processor, display->size);
        return tesserae_result{TESSERAE_OK};
    });
}

const char* tesserae_source_name(uint32_t source) {
    return GuardedOr(nullptr, [=]() -> const char* {
        return source < TESSERAE_SOURCES ? Host::SourceName(source).c_str() : nullptr;
    });
}

const char* tesserae_destination_name(uint32_t destination) {
    return GuardedOr(nullptr, [=]() -> const char* {
        return destination < TESSERAE_DESTINATIONS ? Host::DestinationName(destination).c_str()
                                                   : nullptr;
    });
}
