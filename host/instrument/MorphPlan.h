#pragma once

#include <cstdint>
#include <vector>

namespace Quorvan::Host {

/// The settings in which sounds A and B differ, ready for the audio side to walk between them.
struct MorphPlan {
    struct Step {
        uint32_t index;
        float a, b;  ///< positions
        bool jumps;  ///< a choice: goes over at the middle
    };
    std::vector<Step> steps;

    static float Between(const Step& step, float way) {
        if (step.jumps)
            return way < 0.5f ? step.a : step.b;
        return step.a + way * (step.b - step.a);
    }
};

}  // namespace Quorvan::Host
