#pragma once

#include <array>
#include <atomic>
#include <cstdint>

namespace Quorvan::Host {

/// Passes the newest of a series of values from one thread to another, without waiting on either
/// side: what is overtaken by a newer one is never seen.
///
/// Threads  Writing and Publish on one, Take and Reading on the other.
template <class T>
class TripleBuffer {
public:
    /// What Publish will pass on. Holds an older value, not the last one.
    T& Writing() { return slots[writing]; }
    void Publish() {
        writing = middle.exchange(writing | kFresh, std::memory_order_acq_rel) & kSlot;
    }

    /// Answers whether Reading is a newer value now.
    bool Take() {
        if ((middle.load(std::memory_order_relaxed) & kFresh) == 0)
            return false;
        reading = middle.exchange(reading, std::memory_order_acq_rel) & kSlot;
        return true;
    }
    const T& Reading() const { return slots[reading]; }

private:
    static constexpr uint32_t kSlot = 3;   ///< number of a slot
    static constexpr uint32_t kFresh = 4;  ///< nobody has taken it yet

    std::array<T, 3> slots{};
    uint32_t writing = 0, reading = 1;  ///< each side's own slot
    std::atomic<uint32_t> middle{2};
};

}  // namespace Quorvan::Host
