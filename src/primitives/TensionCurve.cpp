#include "primitives/TensionCurve.h"

#include <cmath>

namespace Quorvan::dsp {

namespace {

constexpr float kStepTension = 1000.0f;

/// 0 at 0 and 1 at 1, steepest at 0.
float Bend(float u, float strength) { return std::expm1(-strength * u) / std::expm1(-strength); }

}  // namespace

float TensionCurve(float x0, float y0, float x1, float y1, float x, float tension) {
    if (x1 == x0)
        return (y0 + y1) * 0.5f;
    if (tension == 0.0f)
        return y0 + (y1 - y0) * ((x - x0) / (x1 - x0));
    if (tension >= kStepTension)
        return y0;
    if (tension <= -kStepTension)
        return y1;
    if (tension > 0.0f) {
        const float y = y1 + (y0 - y1) * Bend((x1 - x) / (x1 - x0), tension);
        return std::isnan(y) ? y0 : y;
    }
    const float y = y0 + (y1 - y0) * Bend((x - x0) / (x1 - x0), -tension);
    return std::isnan(y) ? y1 : y;
}

}  // namespace Quorvan::dsp
