#pragma once

#include <cstdint>
#include <vector>

namespace Quorvan::Processor {
class IProcessor;
}

namespace Quorvan::Host {

/// What a picture of the tape needs, copied at one moment. Positions are in frames of the tape.
struct DisplaySnapshot {
    uint64_t tapeLength = 0;
    uint64_t writePosition = 0;
    uint64_t playPosition = 0;
    uint64_t grainsStarted = 0;  ///< pairs, since the processor was made or reset
    uint64_t grainsEnded = 0;
    std::vector<uint32_t> grains;   ///< read positions of the grains that sound
    std::vector<uint32_t> markers;  ///< transients or grid lines
    std::vector<float> tape;        ///< the recorded signal, both channels summed

    /// Reads the present state of processor; leaves out the tape, the long part, where withTape is
    /// false. Between two blocks only. Answers false where the processor has no display record yet,
    /// or somebody else is reading it.
    bool Read(Processor::IProcessor& processor, bool withTape);
};

}  // namespace Quorvan::Host
