#include "granular/GrainShape.h"

#include "primitives/FastMath.h"

namespace Quorvan::dsp {

GrainShape GrainShape::Of(int32_t shape, float parameter) {
    const float v = parameter;
    const float c = v * 0.999f + 0.001f;
    switch (shape) {
        case 0:  // triangle: its peak
            return {v, v * 0.998f + 0.001f};
        case 1:  // trapezoid: the length of an edge
            return {v, c * 0.5f};
        case 2:  // the same with raised-cosine edges
            return {c, c * 0.5f};
        case 3:  // Gaussian: its steepness
            return {v, (4.0f / c) * (4.0f / c)};
        case 4:  // windowed sinc: the number of lobes
            return {v, v * 0.9f + 0.1f};
        case 5:  // exponential fall: what makes it start at 1
            return {c, 1.0f / (FastPow2(c * 14.42695f) - 1.0f)};
        default:  // percussive shapes, likewise
            return {c, 1.0f / (FastPow2(c * -14.42695f) - 1.0f)};
    }
}

}  // namespace Quorvan::dsp
