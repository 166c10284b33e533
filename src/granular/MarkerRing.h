#pragma once

#include <array>
#include <cstdint>
#include <utility>

namespace Quorvan::dsp {

/// The places of the onsets that lie in the loop: up to 200 positions in samples, in order of age.
///
/// Positions go in as the write head meets them, so that in order of age they ascend but for one
/// fall, where the head has wrapped. The pivot stands behind that fall: it is the smallest position
/// and parts the ring into two ascending runs. A full ring gives up its oldest entry.
class MarkerRing {
public:
    static constexpr uint32_t kCapacity = 200;

    void Push(int32_t position);
    /// Removes the oldest entry, if there is one.
    void DropFront();
    /// Removes every entry at or above position; the others keep their order.
    void DropFrom(int32_t position);
    void Clear();

    uint32_t Count() const { return count; }
    /// Entry by age, 0 the oldest; index is below Count.
    int32_t operator[](uint32_t index) const { return entries[Slot(index)]; }
    /// Oldest and newest entry of a ring that isn't empty.
    int32_t Front() const { return entries[front]; }
    int32_t Back() const { return entries[Slot(count - 1)]; }
    /// The entries before and after position around the loop, in this order; both are the same
    /// where one stands on it. The ring isn't empty.
    std::pair<int32_t, int32_t> Neighbours(int32_t position) const;

private:
    static constexpr uint32_t kNone = kCapacity;

    uint32_t Slot(uint32_t index) const {
        const uint32_t slot = front + index;
        return slot < kCapacity ? slot : slot - kCapacity;
    }
    /// Index of the first entry at or above position in an ascending run, or end.
    uint32_t LowerBound(uint32_t begin, uint32_t end, int32_t position) const;
    void FindPivot();

    std::array<int32_t, kCapacity> entries{};
    uint32_t front = 0;  ///< slot of the oldest entry
    uint32_t count = 0;
    uint32_t pivot = kNone;  ///< index by age of the smallest entry
};

}  // namespace Quorvan::dsp
