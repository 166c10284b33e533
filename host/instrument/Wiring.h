#pragma once

#include <array>
#include <cstdint>

#include "host/instrument/HostControl.h"
#include "host/instrument/MidiMap.h"

namespace Quorvan::Host {

/// What moves which parameter, beside the window: what MIDI has taught, and the targets of the free
/// controls. It belongs to the instance and to no sound.
struct Wiring {
    MidiMap midi;
    std::array<uint32_t, kAssignments> assignments{};

    bool operator==(const Wiring&) const = default;
};

}  // namespace Quorvan::Host
