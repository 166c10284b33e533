#pragma once

namespace Quorvan::Host {

class Engine;
class ParameterCatalog;

/// How long a processor goes on sounding after its input has ended.
struct Tail {
    double seconds = 0.0;  ///< from 0 to kLongestTail, latency not counted
    bool endless = false;  ///< it holds or feeds itself; seconds is then only a sensible stretch
};

inline constexpr double kLongestTail = 120.0;  ///< seconds
inline constexpr double kEndlessTail = 30.0;   ///< seconds given for a tail that never ends

/// The tail for the parameters and the tempo as engine has them now: grains and the tape that they
/// read, persistence, the feedback loop and the effects, each until 60 dB down, with every
/// modulated parameter at the far end of its reach. An upper estimate; a frozen tape, a frozen
/// reverb and loops that lose nothing are endless.
Tail EstimateTail(Engine& engine, const ParameterCatalog& catalog);

}  // namespace Quorvan::Host
