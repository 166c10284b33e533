#include "host/engine/WriteQueue.h"

#include <algorithm>

namespace Quorvan::Host {

WriteQueue::WriteQueue(size_t capacity) : limit(capacity) { entries.reserve(capacity); }

bool WriteQueue::Add(const Entry& entry) {
    if (entries.size() == limit)
        return false;
    const auto place = std::upper_bound(
        entries.begin(), entries.end(), entry.frame,
        [](uint64_t frame, const Entry& waiting) { return frame < waiting.frame; });
    entries.insert(place, entry);
    return true;
}

}  // namespace Quorvan::Host
