#include "host/instrument/TapeOutline.h"

#include <algorithm>
#include <bit>

namespace Quorvan::Host {

namespace {

/// The bits of a float as a whole number of the same order, and back: those run in vectors.
int32_t Key(int32_t bits) { return bits ^ ((bits >> 31) & 0x7fffffff); }

}  // namespace

uint32_t TapeOutline::ColumnOf(uint32_t sample) const {
    return std::min(static_cast<uint32_t>(static_cast<uint64_t>(sample) * kColumns / size),
                    kColumns - 1);
}

void TapeOutline::Follow(const float* tape, uint32_t length, uint32_t written) {
    if (length == 0)
        return;
    samples = tape;
    if (size != length) {
        size = length;
        head = ColumnOf(written);
    }
    // The head is at most a block further than at the last call, unless it has jumped.
    const uint32_t now = ColumnOf(std::min(written, size));
    constexpr uint32_t kMost = 8;
    for (uint32_t moved = 0; head != now && moved < kMost; ++moved) {
        Measure(head);
        head = (head + 1) % kColumns;
    }
    head = now;
    Measure(head);
    Measure(next);
    next = (next + 1) % kColumns;
}

void TapeOutline::Measure(uint32_t column) {
    const uint32_t begin = std::min(Begin(column), size - 1);
    const uint32_t end = std::max(begin + 1, Begin(column + 1));
    int32_t lowest = INT32_MAX, highest = INT32_MIN;
    for (uint32_t i = begin; i < end; ++i) {
        const int32_t key = Key(std::bit_cast<int32_t>(samples[i]));
        lowest = std::min(lowest, key);
        highest = std::max(highest, key);
    }
    columns.lowest[column] = std::bit_cast<float>(Key(lowest));
    columns.highest[column] = std::bit_cast<float>(Key(highest));
}

}  // namespace Quorvan::Host
