#pragma once

namespace Quorvan::Host {

/// Where the song stands.
struct Transport {
    double tempo = 120.0;  ///< beats per minute, held to 1..999
    double beat = 0.0;     ///< song position in quarter notes, negative in a pre-roll
    bool playing = false;  ///< the position moves on by itself
};

}  // namespace Quorvan::Host
