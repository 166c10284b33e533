#include "host/engine/TailEstimator.h"

#include <algorithm>

#include "host/engine/EffectTail.h"
#include "host/engine/Engine.h"
#include "host/engine/GranularTail.h"
#include "host/engine/ParameterReach.h"
#include "host/parameters/ShellIndex.h"

namespace Quorvan::Host {

namespace {

/// Smoothers, fades and the feedback delay, which no parameter changes.
constexpr double kSettling = 0.3;  // seconds

}  // namespace

Tail EstimateTail(Engine& engine, const ParameterCatalog& catalog) {
    if (engine.Position(kBypassIndex) > 0.5f)
        return {};
    const ParameterReach reach(engine, catalog);
    const double tempo = engine.GetTransport().tempo;
    Tail tail{kSettling, false};
    for (const Tail& part :
         {GranularTail(reach, tempo), EffectTail(reach, tempo, 1), EffectTail(reach, tempo, 2)}) {
        tail.seconds += part.seconds;
        tail.endless = tail.endless || part.endless;
    }
    tail.seconds = tail.endless ? kEndlessTail : std::min(tail.seconds, kLongestTail);
    return tail;
}

}  // namespace Quorvan::Host
