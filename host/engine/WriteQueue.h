#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Quorvan::Host {

/// Parameter writes that wait for their block, in order of their frames. Takes all its memory when
/// it is made.
class WriteQueue {
public:
    struct Entry {
        uint64_t frame;
        uint32_t index;
        float position;
    };

    explicit WriteQueue(size_t capacity);

    /// Puts a write behind all others of its frame; false where there is no room.
    bool Add(const Entry& entry);
    void Clear() { entries.clear(); }
    size_t Size() const { return entries.size(); }

    /// Hands every write for a frame before end to take, and forgets it.
    template <class Take>
    void TakeBefore(uint64_t end, Take&& take) {
        auto entry = entries.begin();
        for (; entry != entries.end() && entry->frame < end; ++entry)
            take(*entry);
        entries.erase(entries.begin(), entry);
    }

private:
    size_t limit;
    std::vector<Entry> entries;
};

}  // namespace Quorvan::Host
