#pragma once

#include <array>
#include <boost/lockfree/spsc_queue.hpp>
#include <cstdint>

namespace Quorvan::Host {

/// Highest and lowest sample of each of 1024 stretches of the tape, kept up to date as it is
/// written. Each call of Follow reads what is new under the write head, however long the tape, and
/// while one that was not looked at for a while has not been seen whole, twelve of the others in
/// turn, for 86 calls; after that one with each eighth, since a tape changes nowhere else.
///
/// Threads  Take on one, all others on another. None waits. Where nobody takes for some seconds,
///          what is missed is looked at again.
class TapeOutline {
public:
    static constexpr uint32_t kColumns = 1024;
    struct Columns {
        std::array<float, kColumns> lowest{}, highest{};
    };

    /// The tape is empty.
    void Clear();
    /// What stands on the tape is not known any more.
    void LookAgain() { unseen = kColumns; }
    /// tape: length samples, of which those up to written (not counted) are the newest; frames: how
    /// many have come since the last call.
    void Follow(const float* tape, uint32_t length, uint32_t written, uint32_t frames);
    /// Brings what was taken before up to date.
    void Take(Columns& taken);

private:
    struct Column {
        uint32_t number;  ///< kColumns: all of them
        float lowest, highest;
    };

    void Measure(uint32_t column);
    /// Takes begin..end into the head's column, which begins anew where they begin with it.
    void Extend(uint32_t begin, uint32_t end);
    void Tell(const Column& column);
    /// From column up to, but not including, end, most columns at most. Answers the one behind
    /// them.
    uint32_t MeasureUpTo(uint32_t end, uint32_t column, uint32_t most);
    uint32_t Begin(uint32_t column) const {
        return static_cast<uint32_t>(static_cast<uint64_t>(column) * size / kColumns);
    }
    uint32_t ColumnOf(uint32_t sample) const;

    const float* samples = nullptr;
    uint32_t size = 0;
    Column head{};      ///< that of the write head
    uint32_t seen = 0;  ///< the head's place at the last call
    uint32_t next = 0;  ///< the one whose turn it is
    uint32_t unseen = kColumns;
    uint32_t calls = 0;       ///< of Follow, since all of it has been seen
    bool clearWaits = false;  ///< for room
    boost::lockfree::spsc_queue<Column, boost::lockfree::capacity<2 * kColumns>> news;
};

}  // namespace Quorvan::Host
