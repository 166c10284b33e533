#pragma once

#include <cstdint>

namespace Quorvan::Processor {

/// One event of the two event queues. Events are not placed inside a block.
struct MidiEvent {
    static constexpr uint32_t kMidiMessage = 1;

    uint32_t type;       ///< kMidiMessage for a MIDI message
    uint32_t time;       ///< 0
    uint8_t message[3];  ///< status and two data bytes
    uint8_t filler;
};
static_assert(sizeof(MidiEvent) == 12);

/// Fixed queue of events that travels down the tree inside every ProcessBlock.
struct EventQueue {
    static constexpr uint32_t kCapacity = 256;

    uint32_t count = 0;
    MidiEvent events[kCapacity] = {};
};

}  // namespace Quorvan::Processor
