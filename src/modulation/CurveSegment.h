#pragma once

#include <cmath>

namespace Quorvan::dsp {

/// One segment of a drawn curve, with all that its steps share worked out: TensionCurve at half the
/// cost.
class CurveSegment {
public:
    /// Tension below which a segment is a straight line, and at which it is a step.
    static constexpr float kStraight = 0.0001f;
    static constexpr float kStep = 1000.0f;

    /// Holds no x.
    CurveSegment() = default;
    /// x1 is above x0, slope leads from one point to the other.
    CurveSegment(float fromX, float fromY, float toX, float toY, float slope, float tension)
        : x0(fromX), x1(toX), y0(fromY), y1(toY), rise(slope) {
        const float strength = std::abs(tension);
        if (strength >= kStep) {
            y0 = tension > 0.0f ? fromY : toY;
            rise = 0.0f;
        } else if (strength >= kStraight) {
            bend = tension;
            whole = std::expm1(-strength);
        }
    }

    bool Holds(float x) const { return x0 <= x && x < x1; }
    bool IsLine() const { return bend == 0.0f; }
    /// Height on a segment that is a line.
    float LineAt(float x) const { return (x - x0) * rise + y0; }
    float HeightAt(float x) const {
        if (bend == 0.0f)
            return LineAt(x);
        if (bend > 0.0f)
            return y1 + (y0 - y1) * (std::expm1(-bend * ((x1 - x) / (x1 - x0))) / whole);
        return y0 + (y1 - y0) * (std::expm1(bend * ((x - x0) / (x1 - x0))) / whole);
    }

private:
    float x0 = 0.0f, x1 = 0.0f;
    float y0 = 0.0f, y1 = 0.0f;
    float rise = 0.0f;   ///< height a unit of x
    float bend = 0.0f;   ///< tension, 0 for a line
    float whole = 1.0f;  ///< the exponential over the whole segment
};

}  // namespace Quorvan::dsp
