#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "host/parameters/ParameterCatalog.h"
#include "host/state/Preset.h"

namespace Quorvan::Host {

/// The way from sound A to sound B for the audio side, which knows the one that is played.
struct MorphPlan {
    /// A setting.
    struct Step {
        uint32_t index;
        float other;  ///< position in the sound that is not played
        bool jumps;   ///< a choice: goes over at the middle
    };
    std::vector<Step> steps;
    uint32_t played = 0;  ///< 0: A, 1: B

    /// Position on the way, 0 (A) to 1 (B), of a setting that the played sound has at own.
    float At(const Step& step, float own, float way) const {
        const float a = played == 0 ? own : step.other;
        const float b = played == 0 ? step.other : own;
        if (step.jumps)
            return way < 0.5f ? a : b;
        return a + way * (b - a);
    }
};

/// Between the sound that is played (0: A, 1: B) and another one.
std::unique_ptr<MorphPlan> PlanMorph(uint32_t played, const State& other,
                                     const ParameterCatalog& catalog);

}  // namespace Quorvan::Host
