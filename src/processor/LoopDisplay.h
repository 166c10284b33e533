#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Quorvan::dsp {
class MoteWeaver;
}

namespace Quorvan::Processor {

/// What a user interface reads of the loop, as binary parameter "VisualizedBuffer".
struct DisplayRecord {
    const float* buffer = nullptr;  ///< mono image of the loop; read without the lock
    uint64_t length = 0;            ///< samples
    uint64_t writePosition = 0;
    uint64_t playPosition = 0;
    const std::vector<uint32_t>* grains = nullptr;   ///< read positions of the shown grains
    const std::vector<uint32_t>* markers = nullptr;  ///< transients or grid lines
    std::atomic<int32_t>* lock = nullptr;            ///< guards the two vectors: 1 while taken
    uint64_t started = 0;  ///< pairs of grains since the processor was made
    uint64_t ended = 0;
};
#if UINTPTR_MAX > 0xffffffffu
static_assert(sizeof(DisplayRecord) == 72);
static_assert(offsetof(DisplayRecord, lock) == 48);
static_assert(offsetof(DisplayRecord, ended) == 64);
#endif
static_assert(sizeof(std::atomic<int32_t>) == 4, "readers take the lock as a plain word");

/// Keeps the record and what it points at.
///
/// Threads  Fill runs on the audio thread; a reader takes the lock by exchanging it with 1, reads
///          the vectors, and stores 0. Fill only tries the lock: while the reader holds it, the
///          vectors keep the last block's content.
class LoopDisplay {
public:
    /// Takes the memory and points the record at it.
    void Setup(const dsp::MoteWeaver& granular);
    void ResetCounters() { started = ended = 0; }
    void Fill(const dsp::MoteWeaver& granular);
    const DisplayRecord& Record() const { return record; }

private:
    void FillVectors(const dsp::MoteWeaver& granular);
    void FillFields(const dsp::MoteWeaver& granular);

    DisplayRecord record;
    std::vector<uint32_t> grains;
    std::vector<uint32_t> markers;
    std::atomic<int32_t> lock{0};
    uint64_t started = 0;
    uint64_t ended = 0;
};

}  // namespace Quorvan::Processor
