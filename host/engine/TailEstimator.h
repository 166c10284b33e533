#pragma once

namespace Quorvan::Host {

class Engine;
class ParameterCatalog;

/// How long a processor goes on sounding after its input has ended.
struct Tail {
    double seconds = 0.0;  ///< from 0 to kLongestTail, latency not counted
    bool endless = false;  ///< it may hold or feed itself; seconds is then only a sensible stretch
    double memory = 0.0;  ///< seconds: sound that is still to come follows at most so much silence;
                          ///< infinite where something holds it for as long as it likes
};

inline constexpr double kLongestTail = 600.0;  ///< seconds; longer ones count as endless
inline constexpr double kEndlessTail = 30.0;   ///< seconds given for a tail that never ends

/// The tail for the parameters and the tempo as engine has them now: grains and the tape that they
/// read, persistence, the feedback loop and the effects, each until the output stays below -90 dB,
/// with every modulated parameter at the far end of its reach. An upper bound for input within full
/// scale: what does not surely fade, as a frozen tape, a frozen reverb, and loops that could give
/// back as much as they take at any frequency and any level, is endless.
Tail EstimateTail(Engine& engine, const ParameterCatalog& catalog);

}  // namespace Quorvan::Host
