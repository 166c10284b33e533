#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "host/engine/StreamFormat.h"
#include "host/engine/Transport.h"

namespace Quorvan::Host {

/// Something that happens at a frame of a buffer.
struct InstrumentEvent {
    enum class Kind : uint8_t {
        Control,    ///< host control id goes to position value, 0..1
        Offset,     ///< host control id is moved away from its position by value, -1..1
        Parameter,  ///< parameter id goes to position value
        Midi,       ///< a MIDI message of up to three bytes
        Transport   ///< the song is at place
    };

    uint32_t frame = 0;  ///< counted from the buffer's first; later than its end counts as its end
    Kind kind = Kind::Control;
    uint32_t id = 0;
    double value = 0.0;
    std::array<uint8_t, 3> midi{};
    Transport place{};
};

/// One call of the audio thread. Events are in order of their frames.
struct InstrumentBuffer {
    AudioBuffers audio;
    std::span<const InstrumentEvent> events;
    /// At the first frame; none where the host has no transport, and the instrument's own counts.
    std::optional<Transport> transport;
};

/// What an instrument tells its host while it processes: moves that do not come from the host.
/// Called on the audio thread, from inside Process.
class ControlSink {
public:
    virtual ~ControlSink() = default;
    virtual void OnControlMove(uint32_t /*frame*/, uint32_t /*id*/, double /*position*/) {}
    /// Somebody takes hold of a control on the instrument's own face, or lets go of it.
    virtual void OnGesture(uint32_t /*id*/, bool /*begins*/) {}
};

}  // namespace Quorvan::Host
