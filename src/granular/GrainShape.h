#pragma once

#include <cstdint>

namespace Quorvan::dsp {

/// The two numbers that bend a grain envelope, worked out once from its parameter.
struct GrainShape {
    float a = 0.0f, b = 0.0f;

    /// Those of shape 0 to 7 at a parameter 0..1.
    static GrainShape Of(int32_t shape, float parameter);
};

}  // namespace Quorvan::dsp
