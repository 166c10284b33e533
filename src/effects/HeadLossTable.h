#pragma once

#include <array>
#include <cstddef>

namespace Quorvan::dsp {

/// Corners and resonances of a playback head's losses over the delay: the slower the tape, the less
/// of the top comes back.
struct HeadLossTable {
    /// In hertz, except the resonances.
    struct Entry {
        float headFrequency, headQ, gapFrequency, gapQ;
    };
    static constexpr float kShortestMs = 60.0f, kLongestMs = 162.0f;

    /// The one table of the process.
    static const HeadLossTable& Get();

    /// ms within kShortestMs..kLongestMs.
    Entry At(float ms) const;

private:
    HeadLossTable();

    /// One for each millisecond, and one behind the last, which gets no weight.
    std::array<Entry, 104> entries{};
};

}  // namespace Quorvan::dsp
