#pragma once

#include <array>
#include <atomic>
#include <bit>
#include <cstdint>

#include "host/parameters/ShellIndex.h"

namespace Quorvan::Host {

/// Where every parameter of an instrument stands, as its user set it: the one truth that both sides
/// share. What the processor has follows it, block by block; offsets of a modulating host are not
/// in it.
///
/// Threads  all calls from any thread, none of them waits. A reader of many positions may see some
///          of them from before another thread's writes; the writer's marks bring the processor to
///          the last ones all the same.
class PositionBoard {
public:
    /// Parameters of the processor, and one of the instrument's own behind them.
    static constexpr uint32_t kCount = kProcessorParameters + 1;
    static constexpr uint32_t kMorphIndex = kProcessorParameters;

    /// index below kCount.
    float Position(uint32_t index) const {
        return positions[index].load(std::memory_order_relaxed);
    }
    /// Where the sound that is played has the parameter, though a morph may have lent it another
    /// position.
    float Own(uint32_t index) const { return own[index].load(std::memory_order_relaxed); }
    /// For the audio side, which tells the processor itself.
    void Note(uint32_t index, float position) { Note(index, position, position); }
    void Note(uint32_t index, float position, float ownPosition) {
        Lend(index, position);
        NoteOwn(index, ownPosition);
    }
    /// The same, and the played sound keeps its own.
    void Lend(uint32_t index, float position) {
        positions[index].store(position, std::memory_order_relaxed);
    }
    /// The played sound gets one of its own, and nothing is heard of it.
    void NoteOwn(uint32_t index, float position) {
        own[index].store(position, std::memory_order_relaxed);
    }
    /// For everybody else: the processor hears of it with the next block.
    void Put(uint32_t index, float position) { Put(index, position, position); }
    void Put(uint32_t index, float position, float ownPosition) {
        Note(index, position, ownPosition);
        Mark(index);
    }
    /// The processor takes up the position with the next block.
    void Mark(uint32_t index) {
        marks[index / kBits].fetch_or(uint64_t{1} << (index % kBits), std::memory_order_release);
    }
    /// Behind a series of Note that replaces the whole sound: the processor takes up all positions
    /// at once and starts afresh.
    void AskForRestore() { restore.store(true, std::memory_order_release); }

    /// Audio side: whether a restore was asked for. Forgets all marks then, for it covers them.
    bool TakeRestore() {
        if (!restore.load(std::memory_order_relaxed) ||
            !restore.exchange(false, std::memory_order_acquire))
            return false;
        TakeMarks([](uint32_t) {});
        return true;
    }
    /// Audio side: hands the index of every position that was put since the last call to take.
    template <class Take>
    void TakeMarks(Take&& take) {
        for (uint32_t word = 0; word < marks.size(); ++word) {
            if (marks[word].load(std::memory_order_relaxed) == 0)
                continue;
            for (uint64_t set = marks[word].exchange(0, std::memory_order_acquire); set != 0;
                 set &= set - 1)
                take(word * kBits + static_cast<uint32_t>(std::countr_zero(set)));
        }
    }

private:
    static constexpr uint32_t kBits = 64;
    std::array<std::atomic<float>, kCount> positions{}, own{};
    std::array<std::atomic<uint64_t>, (kCount + kBits - 1) / kBits> marks{};
    std::atomic<bool> restore{false};
};

}  // namespace Quorvan::Host
