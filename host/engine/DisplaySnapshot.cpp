#include "host/engine/DisplaySnapshot.h"

#include "host/parameters/ShellIndex.h"
#include "processor/IProcessor.h"
#include "processor/LoopDisplay.h"

namespace Quorvan::Host {

namespace {

/// Copies the two vectors of a record while nobody else reads or fills them.
bool CopyVectors(const Processor::DisplayRecord& record, DisplaySnapshot& snapshot) {
    if (record.lock->exchange(1, std::memory_order_acquire) != 0)
        return false;
    snapshot.grains = *record.grains;
    snapshot.markers = *record.markers;
    record.lock->store(0, std::memory_order_release);
    return true;
}

}  // namespace

bool DisplaySnapshot::Read(Processor::IProcessor& processor, bool withTape) {
    Processor::DisplayRecord record;
    uint32_t size = sizeof record;
    if (!processor.GetParameterBlob(kDisplayIndex, reinterpret_cast<uint8_t*>(&record), &size))
        return false;
    if (record.lock == nullptr || record.buffer == nullptr || !CopyVectors(record, *this))
        return false;
    tapeLength = record.length;
    writePosition = record.writePosition;
    playPosition = record.playPosition;
    grainsStarted = record.started;
    grainsEnded = record.ended;
    tape.clear();
    if (withTape)
        tape.assign(record.buffer, record.buffer + record.length);
    return true;
}

}  // namespace Quorvan::Host
