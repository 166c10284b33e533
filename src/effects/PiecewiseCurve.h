#pragma once

#include <cstdint>
#include <limits>
#include <vector>

namespace Quorvan::dsp {

/// Static transfer curve put together from straight lines and pieces of exponentials, for blocks.
/// The pieces stand in the order of their ends; what an exponential needs is worked out once, when
/// its piece is added, so that a sample costs a search, a row of the table and one exponential.
/// Follows TensionCurve to 1e-6.
class PiecewiseCurve {
public:
    enum class Symmetry : uint8_t {
        kNone,  ///< the curve is given for x
        kOdd,   ///< the curve is given for |x|, the result takes the sign of x
        kFold   ///< x first goes to its remainder of 0.5, which keeps its sign
    };
    static constexpr float kUnbounded = std::numeric_limits<float>::infinity();

    explicit PiecewiseCurve(Symmetry form) : symmetry(form) {}

    /// A level up to end.
    PiecewiseCurve& Level(float end, float y) { return Line(end, 0.0f, y, 0.0f); }
    /// The line through (x, y), up to end.
    PiecewiseCurve& Line(float end, float x, float y, float slope);
    /// TensionCurve from (x0, y0) to (x1, y1), with a tension other than 0, up to end.
    PiecewiseCurve& Tension(float end, float x0, float y0, float x1, float y1, float tension);

    /// Shapes count samples in place.
    void Apply(float* samples, uint32_t count) const;

private:
    /// y = value + slope * d + weight * (e^(rate * d) - 1), with d = x - origin.
    struct Piece {
        float origin, value, slope, weight, rate;
    };
    static constexpr uint32_t kChunk = 32;  // samples of one pass, on the stack

    template <Symmetry kForm>
    void ApplyForm(float* samples, uint32_t count) const;
    template <Symmetry kForm>
    void ApplyChunk(float* samples, uint32_t count) const;

    Symmetry symmetry;
    std::vector<float> ends;  ///< of each piece, rising
    std::vector<Piece> pieces;
};

}  // namespace Quorvan::dsp
