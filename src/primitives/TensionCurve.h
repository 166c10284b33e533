#pragma once

namespace Quorvan::dsp {

/// A piece of an exponential from (x0, y0) to (x1, y1), at x. Positive tension leaves the start
/// slowly and bends late, negative tension is its mirror, 0 a straight line, and at 1000 and beyond
/// the piece is a step. Does not hold x to the piece: outside, the exponential goes on.
float TensionCurve(float x0, float y0, float x1, float y1, float x, float tension);

}  // namespace Quorvan::dsp
