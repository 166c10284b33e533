#include "processor/LoopDisplay.h"

#include <algorithm>
#include <cmath>

#include "granular/MoteWeaver.h"

namespace Quorvan::Processor {

namespace {
constexpr size_t kGrainRoom = 258;
constexpr size_t kMarkerRoom = 200;
}  // namespace

void LoopDisplay::Setup(const dsp::MoteWeaver& granular) {
    grains.reserve(kGrainRoom);
    markers.reserve(kMarkerRoom);
    record.grains = &grains;
    record.markers = &markers;
    record.lock = &lock;
    FillFields(granular);
}

void LoopDisplay::Fill(const dsp::MoteWeaver& granular) {
    started += granular.StartedCount();
    ended += granular.EndedCount();
    if (lock.exchange(1, std::memory_order_acquire) == 0) {
        FillVectors(granular);
        lock.store(0, std::memory_order_release);
    }
    FillFields(granular);
}

void LoopDisplay::FillVectors(const dsp::MoteWeaver& granular) {
    const dsp::GrainPool& pool = granular.Grains();
    grains.resize(pool.Count());
    size_t count = 0;
    // Without a branch, as chance says which grains are displayed.
    for (uint16_t slot = pool.First(); slot < pool.Capacity(); slot = pool.Next(slot)) {
        const dsp::Grain& grain = pool[slot];
        grains[count] = static_cast<uint32_t>(grain.readPosition);
        count += grain.displayed ? 1 : 0;
    }
    grains.resize(count);

    markers.clear();
    const dsp::CaptureBuffer& capture = granular.Capture();
    if (capture.quantizationMode == dsp::CaptureBuffer::kTransients) {
        for (uint32_t i = 0; i < granular.Markers().Count(); ++i)
            markers.push_back(static_cast<uint32_t>(granular.Markers()[i]));
    } else if (capture.quantizationMode == dsp::CaptureBuffer::kGrid) {
        const uint64_t cells = granular.GridSize();
        for (uint64_t k = 0; k < cells; ++k)
            markers.push_back(static_cast<uint32_t>(capture.length * k / cells));
    }
}

void LoopDisplay::FillFields(const dsp::MoteWeaver& granular) {
    const dsp::CaptureBuffer& capture = granular.Capture();
    record.buffer = capture.mono.data();
    record.length = capture.length;
    record.writePosition = capture.writePosition;
    record.playPosition = static_cast<uint64_t>(std::floor(std::max(capture.playPosition, 0.0)));
    record.started = started;
    record.ended = ended;
}

}  // namespace Quorvan::Processor
