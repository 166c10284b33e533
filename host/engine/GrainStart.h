#pragma once

#include <cstdint>

namespace Quorvan::Host {

/// One grain as it starts. The tape is the loop that the processor records its input into; a
/// trigger starts a left and a right grain, each of which sounds on its own output only.
struct GrainStart {
    uint64_t frame = 0;           ///< when it is made, on the clock of Engine::FramesIn;
                                  ///< it is heard Engine::LatencyFrames later
    bool right = false;           ///< the right grain of its pair
    float tapePosition = 0.0f;    ///< where it starts to read, in frames from the tape's start
    uint32_t tapeLength = 0;      ///< the tape's length at that moment, in frames
    float sourceFrames = 0.0f;    ///< stretch of tape that it reads
    float durationFrames = 0.0f;  ///< how long it sounds, unless released early
    float increment = 1.0f;       ///< tape frames per frame; negative: it reads backward
    float semitones = 0.0f;       ///< the same as a pitch; 0 is the recorded pitch
    float pan = 0.5f;             ///< 0 left, 0.5 centre, 1 right
    float gain = 1.0f;            ///< linear, what its distance leaves: 1 for one that is near
    int32_t shape = 0;            ///< envelope, index of "MoteWeaver_Shape"
    bool reversed = false;        ///< it reads backward
};

}  // namespace Quorvan::Host
