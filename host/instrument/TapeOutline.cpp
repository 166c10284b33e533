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
        head.number = ColumnOf(written);
        seen = Begin(head.number);
    }
    const uint32_t place = std::min(written, size);
    const uint32_t now = ColumnOf(place);
    if (now == head.number && place >= seen) {
        Extend(seen, place);
    } else {
        // The head is no further than what has come, unless it has jumped: then it has written
        // ahead of both places.
        const uint32_t reach = std::min(ColumnOf(std::min(frames, size)) + 2, kColumns);
        const uint32_t behind = head.number + 1;
        Extend(seen, Begin(behind));
        if (MeasureUpTo(now, behind % kColumns, reach) != now)
            MeasureUpTo(now, (now + kColumns - reach) % kColumns, reach);
        head.number = now;
        Extend(Begin(now), place);
    }
    seen = place;
    constexpr uint32_t kInTurn = 12, kSeldom = 8;
    const uint32_t turns = unseen > 0 ? kInTurn : (++calls % kSeldom == 0 ? 1 : 0);
    unseen -= std::min(unseen, turns);
    for (uint32_t i = 0; i < turns; ++i) {
        Measure(next);
        next = (next + 1) % kColumns;
    }
}

uint32_t TapeOutline::MeasureUpTo(uint32_t end, uint32_t column, uint32_t most) {
    for (; column != end && most > 0; --most) {
        Measure(column);
        column = (column + 1) % kColumns;
    }
    return column;
}

void TapeOutline::Clear() {
    head.lowest = head.highest = 0.0f;
    clearWaits = true;
}

void TapeOutline::Take(Columns& taken) {
    news.consume_all([&taken](const Column& column) {
        if (column.number == kColumns) {
            taken = {};
            return;
        }
        taken.lowest[column.number] = column.lowest;
        taken.highest[column.number] = column.highest;
    });
}

void TapeOutline::Measure(uint32_t column) {
    const uint32_t begin = std::min(Begin(column), size - 1);
    const uint32_t end = std::max(begin + 1, Begin(column + 1));
    Column measured{column, 0.0f, 0.0f};
    dsp::LevelKernels::Best().extremes(samples + begin, end - begin, measured.lowest,
                                       measured.highest);
    Tell(measured);
}

void TapeOutline::Extend(uint32_t begin, uint32_t end) {
    if (begin >= end)
        return;
    const Column before = head;
    dsp::LevelKernels::Best().extremes(samples + begin, end - begin, head.lowest, head.highest);
    if (begin > Begin(head.number)) {
        head.lowest = std::min(head.lowest, before.lowest);
        head.highest = std::max(head.highest, before.highest);
    }
    Tell(head);
}

void TapeOutline::Tell(const Column& column) {
    if (clearWaits)
        clearWaits = !news.push({kColumns, 0.0f, 0.0f});
    if (clearWaits || !news.push(column))
        LookAgain();
}

}  // namespace Quorvan::Host
