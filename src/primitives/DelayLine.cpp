#include "primitives/DelayLine.h"

#include <algorithm>

namespace Quorvan::dsp {

namespace {

/// Shorter lines are zeroed where they lie: that takes a few microseconds.
constexpr int32_t kLong = 16384;
/// A line is wiped in so many blocks.
constexpr size_t kWipingBlocks = 64;

}  // namespace

DelayLine& DelayLine::operator=(const DelayLine& other) {
    if (this == &other)
        return *this;
    storage = other.storage;
    data = storage.data();
    if (other.spare.size() > 0)
        spare.Allocate(other.spare.size());
    wiped = dirty = 0;
    isWatched = false;
    isClear = other.isClear;
    size = other.size;
    writeIndex = other.writeIndex;
    allpassState = other.allpassState;
    return *this;
}

void DelayLine::Resize(int32_t length, Clearing clearing) {
    storage.Allocate(static_cast<size_t>(length));
    spare = {};
    if (clearing == Clearing::BitByBit && length >= kLong)
        spare.Allocate(static_cast<size_t>(length));
    wiped = dirty = 0;
    data = storage.data();
    size = length;
    writeIndex = 0;
    allpassState = 0.0f;
    isClear = true;
}

void DelayLine::Clear() {
    if (data != nullptr && !isClear && size > 0)
        Empty();
    writeIndex = lastIndex = 0;
    isWatched = hasWrapped = false;
    allpassState = 0.0f;
    // The owners write through data, which nobody sees: from here on the content counts as unknown.
    isClear = false;
}

void DelayLine::Empty() {
    if (spare.size() == 0) {
        storage.Zero(0, storage.size());
        return;
    }
    if (!isWatched)  // nothing has been written since the last Clear
        return;
    const bool isRound = hasWrapped || writeIndex < lastIndex;
    const size_t end = isRound ? storage.size() : static_cast<size_t>(writeIndex);
    if (wiped < dirty) {
        storage.Zero(0, end);
        return;
    }
    storage.Swap(spare);
    data = storage.data();
    wiped = 0;
    dirty = end;
}

void DelayLine::Wipe() {
    hasWrapped = hasWrapped || writeIndex < lastIndex;
    lastIndex = writeIndex;
    isWatched = true;
    if (wiped >= dirty)
        return;
    const size_t end = std::min(dirty, wiped + spare.size() / kWipingBlocks + 1);
    spare.Zero(wiped, end);
    wiped = end;
}

float DelayLine::AtFar(int64_t index) const {
    const int64_t inRing = index % size;
    return data[inRing < 0 ? inRing + size : inRing];
}

float DelayLine::ReadAllpass(int64_t index, float x) {
    const float c = (1.0f - x) / (1.0f + x);
    allpassState = c * At(index) + At(index - 1) - allpassState * c;
    return allpassState;
}

}  // namespace Quorvan::dsp
