#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace Quorvan::Tools {

/// What a batch has done so far, as one line on the terminal that is drawn anew some times a
/// second, and in words at its end.
///
/// Threads  one at a time.
class BatchTally {
public:
    /// listBytes is the length of the list, where it is known: what share of it is done tells the
    /// time left. The line is drawn where the error stream is a terminal.
    BatchTally(std::optional<uint64_t> listBytes, bool wanted);
    ~BatchTally() { Clear(); }
    BatchTally(const BatchTally&) = delete;
    BatchTally& operator=(const BatchTally&) = delete;

    /// More seconds of sound are done, of jobs in hand too.
    void AddSound(double seconds);
    /// offset is where the job's line ends in the list.
    void AddDone(uint64_t offset, double engineSeconds);
    void AddFailed() { ++failed; }
    /// Processor time of threads that work for the workers.
    void AddHelp(double seconds) { helpSeconds += seconds; }
    void AddSkipped(uint64_t offset);
    /// Takes the line off the terminal.
    void Clear();

    uint64_t Failed() const { return failed; }
    /// "tesserae batch" says it when all is over.
    std::string Words(unsigned workers) const;

private:
    using Clock = std::chrono::steady_clock;

    double Elapsed() const;
    std::string Counts() const;
    void Show();

    std::optional<uint64_t> bytes;
    bool visible;
    bool drawn = false;
    uint64_t done = 0, failed = 0, skipped = 0;
    uint64_t reached = 0;       ///< bytes of the list
    uint64_t skippedBytes = 0;  ///< of the list, which took no time
    double sound = 0.0;         ///< seconds
    double engineSeconds = 0.0;
    double helpSeconds = 0.0;
    Clock::time_point start = Clock::now();
    Clock::time_point last = start;
};

}  // namespace Quorvan::Tools
