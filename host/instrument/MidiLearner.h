#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "host/instrument/MidiDecoder.h"

namespace Quorvan::Host {

/// Finds out what a device's knob or key sends, from the values of its first messages.
///
/// A controller below 32 may be the coarse half of a fine one: the value after it tells.
class MidiLearner {
public:
    /// goesOn: this lesson belongs to those before it, whose sources are not meant again: a wheel
    /// springs back, and a knob is turned on for a while.
    void Begin(bool goesOn);
    /// Whether an earlier lesson of the present ones has taught a source of these.
    bool Knows(const MidiDecoder::Values& values) const;
    /// The source, as soon as it is known.
    std::optional<MidiSource> Hear(const MidiDecoder::Values& values);

private:
    std::optional<MidiSource> Find(const MidiDecoder::Values& values);

    static constexpr size_t kMostTaught = 256;

    std::optional<MidiSource> coarse;  ///< a controller that may have an LSB to come
    std::array<MidiSource, kMostTaught> taught{};
    size_t taughtCount = 0;  ///< of more, the oldest are forgotten
};

}  // namespace Quorvan::Host
