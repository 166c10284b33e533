#include "granular/MarkerRing.h"

namespace Quorvan::dsp {

void MarkerRing::Push(int32_t position) {
    if (count == kCapacity)
        DropFront();
    entries[Slot(count)] = position;
    if (pivot == kNone || position < (*this)[pivot])
        pivot = count;
    ++count;
}

void MarkerRing::DropFront() {
    if (count == 0)
        return;
    front = Slot(1);
    --count;
    // All indices fall by one. Behind a pivot at the front the ring ascends, so that the entry that
    // takes its index is the next smallest.
    if (pivot != kNone && pivot > 0)
        --pivot;
    if (count == 0 || pivot >= count)
        pivot = kNone;
}

void MarkerRing::DropFrom(int32_t position) {
    uint32_t kept = 0;
    for (uint32_t i = 0; i < count; ++i) {
        const int32_t entry = (*this)[i];
        if (entry < position)
            entries[Slot(kept++)] = entry;
    }
    count = kept;
    FindPivot();
}

void MarkerRing::Clear() {
    front = 0;
    count = 0;
    pivot = kNone;
}

std::pair<int32_t, int32_t> MarkerRing::Neighbours(int32_t position) const {
    const uint32_t split = pivot == kNone ? 0 : pivot;
    uint32_t after = LowerBound(split, count, position);
    const uint32_t older = LowerBound(0, split, position);
    if (older < split && (after == count || (*this)[older] < (*this)[after]))
        after = older;
    if (after == count)
        after = split;
    const int32_t value = (*this)[after];
    if (value == position)
        return {value, value};
    return {(*this)[after == 0 ? count - 1 : after - 1], value};
}

uint32_t MarkerRing::LowerBound(uint32_t begin, uint32_t end, int32_t position) const {
    while (begin < end) {
        const uint32_t middle = begin + (end - begin) / 2;
        if ((*this)[middle] < position)
            begin = middle + 1;
        else
            end = middle;
    }
    return begin;
}

void MarkerRing::FindPivot() {
    pivot = count == 0 ? kNone : 0;
    for (uint32_t i = 1; i < count; ++i)
        if ((*this)[i] < (*this)[pivot])
            pivot = i;
}

}  // namespace Quorvan::dsp
