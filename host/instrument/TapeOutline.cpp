#include "host/instrument/TapeOutline.h"

#include <algorithm>

#include "primitives/Extremes.h"

namespace Quorvan::Host {

uint32_t TapeOutline::ColumnOf(uint32_t sample) const {
    return std::min(static_cast<uint32_t>(static_cast<uint64_t>(sample) * kColumns / size),
                    kColumns - 1);
}

void TapeOutline::Follow(const float* tape, uint32_t length, uint32_t written, uint32_t frames) {
    if (length == 0)
        return;
    samples = tape;
    if (size != length) {
        size = length;
        LookAgain();
        head = ColumnOf(written);
    }
    // The head is no further than what has come, unless it has jumped.
    const uint32_t now = ColumnOf(std::min(written, size));
    uint32_t left = std::min(ColumnOf(std::min(frames, size)) + 2, kColumns);
    for (; head != now && left > 0; --left) {
        Measure(head);
        head = (head + 1) % kColumns;
    }
    head = now;
    Measure(head);
    constexpr uint32_t kInTurn = 6;
    const uint32_t turns = unseen > 0 ? kInTurn : 1;
    for (uint32_t i = 0; i < turns; ++i) {
        Measure(next);
        next = (next + 1) % kColumns;
    }
    unseen -= std::min(unseen, turns);
}

void TapeOutline::Clear() {
    columns.lowest = columns.highest = {};
    columns.measured += kRecent + 1;  // so that copies are made whole
}

void TapeOutline::CopyTo(Columns& copy) const {
    if (columns.measured - copy.measured > kRecent) {
        copy = columns;
        return;
    }
    for (; copy.measured < columns.measured; ++copy.measured) {
        const uint32_t column = recent[copy.measured % kRecent];
        copy.lowest[column] = columns.lowest[column];
        copy.highest[column] = columns.highest[column];
    }
}

void TapeOutline::Measure(uint32_t column) {
    const uint32_t begin = std::min(Begin(column), size - 1);
    const uint32_t end = std::max(begin + 1, Begin(column + 1));
    const dsp::Extremes found = dsp::Extremes::Of(samples + begin, end - begin);
    columns.lowest[column] = found.lowest;
    columns.highest[column] = found.highest;
    recent[columns.measured++ % kRecent] = static_cast<uint16_t>(column);
}

}  // namespace Quorvan::Host
