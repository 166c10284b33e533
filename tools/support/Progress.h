#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace Quorvan::Tools {

/// A bar on the terminal, on the error stream: share done, time left, and speed as a multiple of
/// real time. Draws nothing where that stream is no terminal.
class Progress {
public:
    /// rate turns frames into seconds of sound; total is left out where nobody knows it, and is the
    /// most that there can be where it is not certain.
    Progress(double rate, std::optional<uint64_t> total, bool isCertain, bool wanted);
    ~Progress() { Clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// frames are done so far.
    void Show(uint64_t frames);
    /// Takes the bar off the terminal.
    void Clear();

private:
    using Clock = std::chrono::steady_clock;

    void Draw(uint64_t frames, double elapsed) const;

    double sampleRate;
    std::optional<uint64_t> totalFrames;
    bool certain;
    bool visible;
    bool drawn = false;
    Clock::time_point start = Clock::now();
    Clock::time_point last = start;
};

}  // namespace Quorvan::Tools
