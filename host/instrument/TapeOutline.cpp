#include "host/instrument/TapeOutline.h"

#include <algorithm>

#include "primitives/LevelKernels.h"

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
        seen = Begin(head);
    }
    const uint32_t place = std::min(written, size);
    const uint32_t now = ColumnOf(place);
    if (now == head && place >= seen) {
        Extend(seen, place);
    } else {
        // The head is no further than what has come, unless it has jumped: then it has written
        // ahead of both places.
        const uint32_t reach = std::min(ColumnOf(std::min(frames, size)) + 2, kColumns);
        Extend(seen, Begin(head + 1));
        if (MeasureUpTo(now, (head + 1) % kColumns, reach) != now)
            MeasureUpTo(now, (now + kColumns - reach) % kColumns, reach);
        head = now;
        Extend(Begin(now), place);
    }
    seen = place;
    constexpr uint32_t kInTurn = 6, kSeldom = 8;
    const uint32_t turns = unseen > 0 ? kInTurn : (++calls % kSeldom == 0 ? 1 : 0);
    for (uint32_t i = 0; i < turns; ++i) {
        Measure(next);
        next = (next + 1) % kColumns;
    }
    unseen -= std::min(unseen, turns);
}

uint32_t TapeOutline::MeasureUpTo(uint32_t end, uint32_t column, uint32_t most) {
    for (; column != end && most > 0; --most) {
        Measure(column);
        column = (column + 1) % kColumns;
    }
    return column;
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
    dsp::LevelKernels::Best().extremes(samples + begin, end - begin, columns.lowest[column],
                                       columns.highest[column]);
    Note(column);
}

void TapeOutline::Extend(uint32_t begin, uint32_t end) {
    if (begin >= end)
        return;
    float& lowest = columns.lowest[head];
    float& highest = columns.highest[head];
    const float lowestBefore = lowest, highestBefore = highest;
    dsp::LevelKernels::Best().extremes(samples + begin, end - begin, lowest, highest);
    if (begin > Begin(head)) {
        lowest = std::min(lowest, lowestBefore);
        highest = std::max(highest, highestBefore);
    }
    Note(head);
}

void TapeOutline::Note(uint32_t column) {
    recent[columns.measured++ % kRecent] = static_cast<uint16_t>(column);
}

}  // namespace Quorvan::Host
