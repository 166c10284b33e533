#include "granular/GrainPool.h"

namespace Quorvan::dsp {

void GrainPool::Resize(uint16_t wanted) {
    capacity = wanted;
    skip.resize(capacity + 1u);
    age.resize(capacity);
    slots.resize(capacity);
    Clear();
}

void GrainPool::Clear() {
    count = 0;
    for (SkipNode& node : skip)
        node = {};
    WriteRun(0, Capacity(), kNone, kNone);
    firstFree = lastFree = 0;
    oldest = newest = kNone;
}

/// Out of line: inline the compiler would add the length, also where it is 0.
uint16_t GrainPool::BehindRun(uint16_t first) const {
    return static_cast<uint16_t>(first + skip[first].run);
}

uint16_t GrainPool::Add(const Grain& grain) {
    const uint16_t slot = firstFree;
    TakeFromFirstRun(slot);
    ++count;
    age[slot] = {newest, kNone};
    if (newest != kNone)
        age[newest].next = slot;
    else
        oldest = slot;
    newest = slot;
    slots[slot] = grain;
    return slot;
}

void GrainPool::Erase(uint16_t slot) {
    const bool leftFree = slot > 0 && IsFree(slot - 1u);
    const bool rightFree = IsFree(slot + 1u);
    const auto behind = static_cast<uint16_t>(slot + 1);
    if (!leftFree && !rightFree) {
        InsertRun(slot);
    } else if (!leftFree) {
        const SkipNode right = skip[behind];
        WriteRun(slot, static_cast<uint16_t>(right.run + 1), right.previous, right.next);
        Relink(right.previous, right.next, slot);
    } else {
        const uint16_t leftRun = skip[slot - 1].run;
        const auto first = static_cast<uint16_t>(slot - leftRun);
        const SkipNode left = skip[first];
        if (!rightFree) {
            WriteRun(first, static_cast<uint16_t>(leftRun + 1), left.previous, left.next);
        } else {
            const SkipNode right = skip[behind];
            WriteRun(first, static_cast<uint16_t>(leftRun + 1 + right.run), left.previous,
                     right.next);
            Relink(left.previous, right.next, first);
        }
    }
    --count;
    const AgeLinks links = age[slot];
    (links.previous != kNone ? age[links.previous].next : oldest) = links.next;
    (links.next != kNone ? age[links.next].previous : newest) = links.previous;
}

void GrainPool::WriteRun(uint16_t first, uint16_t length, uint16_t previous, uint16_t next) {
    skip[first] = skip[first + length - 1u] = {length, next, previous};
}

void GrainPool::Relink(uint16_t previous, uint16_t next, uint16_t first) {
    const uint16_t toNext = first != kNone ? first : next;
    const uint16_t toPrevious = first != kNone ? first : previous;
    if (previous != kNone) {
        const uint16_t last = static_cast<uint16_t>(previous + skip[previous].run - 1);
        skip[previous].next = skip[last].next = toNext;
    } else {
        firstFree = toNext;
    }
    if (next != kNone) {
        const uint16_t last = static_cast<uint16_t>(next + skip[next].run - 1);
        skip[next].previous = skip[last].previous = toPrevious;
    } else {
        lastFree = toPrevious;
    }
}

void GrainPool::TakeFromFirstRun(uint16_t slot) {
    const SkipNode run = skip[slot];
    if (run.run == 1) {
        Relink(kNone, run.next, kNone);
    } else {
        const auto first = static_cast<uint16_t>(slot + 1);
        WriteRun(first, static_cast<uint16_t>(run.run - 1), kNone, run.next);
        Relink(kNone, run.next, first);
    }
    skip[slot].run = 0;
}

/// A run of one slot at its place in the ascending list.
void GrainPool::InsertRun(uint16_t slot) {
    uint16_t previous = kNone;
    uint16_t next = firstFree;
    while (next != kNone && next < slot) {
        previous = next;
        next = skip[next].next;
    }
    WriteRun(slot, 1, previous, next);
    Relink(previous, next, slot);
}

}  // namespace Quorvan::dsp
