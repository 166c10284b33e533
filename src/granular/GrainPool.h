#pragma once

#include <cstdint>
#include <vector>

#include "granular/Grain.h"

namespace Quorvan::dsp {

/// Grains in a fixed array with stable slot numbers. Gives the lowest free slot, iteration over the
/// live slots in slot order that jumps over free ones, and the live grains by age.
///
/// Free slots form runs; the first and the last node of a run hold its length and links to its
/// neighbours in ascending order. Nothing allocates after Resize. Slots are not added or erased
/// during an iteration.
class GrainPool {
public:
    /// Stands for no slot.
    static constexpr uint16_t kNone = 65535;

    /// Takes the memory, once; the capacity is from 1 to below kNone.
    void Resize(uint16_t wanted);
    void Clear();
    /// Puts a copy into the lowest free slot, of which there is one, and answers the slot.
    uint16_t Add(const Grain& grain);
    void Erase(uint16_t slot);

    uint32_t Count() const { return count; }
    uint16_t Capacity() const { return capacity; }
    /// First live slot, and the next one after a live slot; Capacity is the end.
    uint16_t First() const { return skip[0].run; }
    uint16_t Next(uint16_t slot) const {
        const auto next = static_cast<uint16_t>(slot + 1);
        // A guess, so that in a full pool nothing waits for the length of a run.
        return skip[next].run == 0 ? next : BehindRun(next);
    }
    /// Oldest live slot and the next younger one, or kNone.
    uint16_t Oldest() const { return oldest; }
    uint16_t NextByAge(uint16_t slot) const { return age[slot].next; }
    /// First slots of the first and of the last run of free ones, or kNone.
    uint16_t FirstFree() const { return firstFree; }
    uint16_t LastFree() const { return lastFree; }

    Grain& operator[](uint16_t slot) { return slots[slot]; }
    const Grain& operator[](uint16_t slot) const { return slots[slot]; }

private:
    /// What is known of a slot: the length of the free run that it ends, 0 while it is live, and
    /// the first slots of the runs before and behind.
    struct SkipNode {
        uint16_t run = 0;
        uint16_t next = kNone;
        uint16_t previous = kNone;
    };
    struct AgeLinks {
        uint16_t previous = kNone;
        uint16_t next = kNone;
    };

    uint16_t BehindRun(uint16_t first) const;
    bool IsFree(uint32_t slot) const { return slot < slots.size() && skip[slot].run != 0; }
    void WriteRun(uint16_t first, uint16_t length, uint16_t previous, uint16_t next);
    /// Makes the runs around one that has moved, or gone where first is kNone, point at it.
    void Relink(uint16_t previous, uint16_t next, uint16_t first);
    void TakeFromFirstRun(uint16_t slot);
    void InsertRun(uint16_t slot);

    uint16_t capacity = 0, count = 0;
    std::vector<SkipNode> skip;  ///< one for each slot and a live sentinel at the end
    uint16_t firstFree = kNone, lastFree = kNone;  ///< first and last free run
    uint16_t oldest = kNone, newest = kNone;
    std::vector<AgeLinks> age;
    std::vector<Grain> slots;
};

}  // namespace Quorvan::dsp
