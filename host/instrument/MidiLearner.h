#pragma once

#include <optional>

#include "host/instrument/MidiDecoder.h"

namespace Quorvan::Host {

/// Finds out what a device's knob or key sends, from the values of its first messages.
///
/// A controller below 32 may be the coarse half of a fine one: the value after it tells.
class MidiLearner {
public:
    void Begin() { coarse.reset(); }
    /// The source, as soon as it is known.
    std::optional<MidiSource> Hear(const MidiDecoder::Values& values);

private:
    std::optional<MidiSource> coarse;  ///< a controller that may have an LSB to come
};

}  // namespace Quorvan::Host
