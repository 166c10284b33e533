#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <utility>

#include "framework/ParameterTable.h"
#include "modulation/CurveSegment.h"
#include "modulation/TriangularDraw.h"

namespace Quorvan::dsp {

/// A curve over 0..1 through up to Points points, with a tension on each segment between two, mixed
/// into the module that owns its parameters. The first point stands at 0, the last one in use at 1,
/// and a point that is left of its neighbour counts as standing at the neighbour's place.
///
/// Parameters  from FirstId on
///             +0 LastActivePointIndex
///             +1 RandomAmount: how much of RandomX and RandomY a random engine uses
///             +2 Bipolar off: 0..1, on: -1..1
///             +3 Scale -1..1: height of the curve about 0.5
///             +4 FeedbackNextPoint, +5 FeedbackPositionInSegment: written, where the curve is read
///             then PointX, PointY, Tension -1000..1000 (one less), RandomX, RandomY, each numbered
///             from 1
/// Random      an engine moves the points at every restart; without one they stay
template <uint32_t Points, class Owner, uint32_t FirstId>
class FunctionHelper {
public:
    static_assert(Points >= 2, "a curve has two ends");

    enum HelperId : uint32_t {
        LastActivePointIndex = FirstId,
        RandomAmount,
        Bipolar,
        Scale,
        FeedbackNextPoint,
        FeedbackPositionInSegment,
        PointX1,
        PointY1 = PointX1 + Points,
        Tension1 = PointY1 + Points,
        RandomX1 = Tension1 + Points - 1,
        RandomY1 = RandomX1 + Points,
        kEndId = RandomY1 + Points  ///< the first id behind the curve's
    };

    /// Rows of the parameters above.
    static ParameterTable Rows();

    /// The curve at a phase, 0..1. Tells in the feedback parameters where that is.
    float Evaluate(float phase) {
        const float x = OnCurve(phase);
        WriteFeedback(x);
        return Shaped(HeightAt(x), Self().Value(Bipolar));
    }

    /// engine outlives its use here; null for none.
    void SetRandomEngine(std::mt19937* engine) { randomEngine = engine; }

protected:
    float X(uint32_t k) const { return pointX[k] + randomX[k]; }
    float Y(uint32_t k) const { return pointY[k] + randomY[k]; }
    /// A phase held to the curve's extent.
    float OnCurve(float phase) const { return std::clamp(phase, 0.0f, X(lastPoint)); }
    /// Index of the end point of the segment that holds x; above lastPoint at the curve's end.
    uint32_t EndOfSegment(float x) const {
        uint32_t end = 1;
        while (end <= lastPoint && !(x < X(end)))
            ++end;
        return end;
    }
    CurveSegment SegmentTo(uint32_t end) const {
        const uint32_t start = end - 1;
        return {X(start), Y(start), X(end), Y(end), slope[start], tension[start]};
    }
    float HeightAt(float x) const {
        const uint32_t end = EndOfSegment(x);
        return end <= lastPoint ? SegmentTo(end).HeightAt(x) : Y(lastPoint);
    }
    /// Output for a height of the curve.
    float Shaped(float height, float bipolar) const {
        const float y = (height - 0.5f) * scale + 0.5f;
        return (y - 1.0f) * bipolar + y;
    }
    /// Height at which a finished one-shot rests.
    float RestingHeight() const {
        const bool doubled = lastPoint != 0 && X(lastPoint) == X(lastPoint - 1);
        return Y(doubled ? lastPoint - 1 : lastPoint);
    }

    void UpdateCurve();
    void RestartCurve();
    void WriteFeedback(float x);
    void WriteFeedback(uint32_t nextPoint, float position) {
        Self().SetParameterValue(FeedbackNextPoint, static_cast<float>(nextPoint));
        Self().SetParameterValue(FeedbackPositionInSegment, position);
    }

    // Coefficients.
    bool closedLoop = false;     ///< the last point takes the first one's random height
    bool lastPointAtOne = true;  ///< the last point stands at 1, whatever its parameter
    float scale = 1.0f;
    std::array<float, Points> pointX{};   ///< 0..1, never falling
    std::array<float, Points> pointY{};   ///< 0..1
    std::array<float, Points> randomX{};  ///< offsets of pointX
    std::array<float, Points> randomY{};  ///< offsets of pointY
    std::array<float, Points> tension{};  ///< of the segment that starts at the point
    std::array<float, Points - 1> segmentDeltaX{}, segmentDeltaY{};
    std::array<float, Points - 1> segmentRandomDeltaX{}, segmentRandomDeltaY{};
    std::array<float, Points - 1> inverseDeltaX{};  ///< 0 for an upright segment
    std::array<float, Points - 1> slope{};
    uint32_t lastPoint = 2;  ///< index of the last point in use

private:
    Owner& Self() { return static_cast<Owner&>(*this); }
    void UpdatePoints();
    void UpdateSegment(uint32_t i);
    void UpdateSegments();
    void DrawOffsets();
    float Draw(float low, float high) {
        return low < high ? TriangularDraw(*randomEngine, low, high) : 0.0f;
    }

    std::mt19937* randomEngine = nullptr;
};

template <uint32_t Points, class Owner, uint32_t FirstId>
ParameterTable FunctionHelper<Points, Owner, FirstId>::Rows() {
    using P = ParameterSpec;
    ParameterTable rows{
        P::Stepped("LastActivePointIndex", Points).AtValue(2.0f),
        P::Raw("RandomAmount"),
        P::Stepped("Bipolar", 2),
        P::Linear("Scale", -1.0f, 1.0f).AtValue(1.0f),
        P::Stepped("FeedbackNextPoint", Points),
        P::Raw("FeedbackPositionInSegment"),
    };
    rows = Join(std::move(rows), Numbered("PointX", Points, P::Raw("")));
    rows = Join(std::move(rows), Numbered("PointY", Points, P::Raw("")));
    rows = Join(std::move(rows), Numbered("Tension", Points - 1, P::Linear("", -1000.0f, 1000.0f)));
    rows = Join(std::move(rows), Numbered("RandomX", Points, P::Raw("")));
    return Join(std::move(rows), Numbered("RandomY", Points, P::Raw("")));
}

template <uint32_t Points, class Owner, uint32_t FirstId>
void FunctionHelper<Points, Owner, FirstId>::UpdateCurve() {
    if (Self().IsChanged(Scale))
        scale = Self().Value(Scale);
    if (!Self().IsChanged(LastActivePointIndex) && !Self().AnyChanged(PointX1, RandomX1))
        return;
    const int32_t index = Self().Index(LastActivePointIndex);
    lastPoint = static_cast<uint32_t>(std::clamp(index, 0, static_cast<int32_t>(Points - 1)));
    UpdatePoints();
    UpdateSegments();
}

template <uint32_t Points, class Owner, uint32_t FirstId>
void FunctionHelper<Points, Owner, FirstId>::UpdatePoints() {
    pointX[0] = 0.0f;
    for (uint32_t i = 0; i < lastPoint; ++i) {
        if (i > 0)
            pointX[i] = std::max(Self().Value(PointX1 + i), pointX[i - 1]);
        pointY[i] = Self().Value(PointY1 + i);
        tension[i] = Self().Value(Tension1 + i);
    }
    pointX[lastPoint] = lastPointAtOne ? 1.0f : Self().Value(PointX1 + lastPoint);
    pointY[lastPoint] = Self().Value(PointY1 + lastPoint);
}

template <uint32_t Points, class Owner, uint32_t FirstId>
void FunctionHelper<Points, Owner, FirstId>::UpdateSegments() {
    for (uint32_t i = 0; i < lastPoint; ++i) {
        segmentDeltaX[i] = pointX[i + 1] - pointX[i];
        segmentDeltaY[i] = pointY[i + 1] - pointY[i];
        segmentRandomDeltaX[i] = randomX[i + 1] - randomX[i];
        segmentRandomDeltaY[i] = randomY[i + 1] - randomY[i];
        const float deltaX = segmentDeltaX[i] + segmentRandomDeltaX[i];
        inverseDeltaX[i] = deltaX == 0.0f ? 0.0f : 1.0f / deltaX;
        slope[i] = (segmentDeltaY[i] + segmentRandomDeltaY[i]) * inverseDeltaX[i];
    }
}

/// Takes the points back to their places, and on to new ones where there is a random engine.
template <uint32_t Points, class Owner, uint32_t FirstId>
void FunctionHelper<Points, Owner, FirstId>::RestartCurve() {
    randomX.fill(0.0f);
    randomY.fill(0.0f);
    if (randomEngine != nullptr && Self().Value(RandomAmount) != 0.0f)
        DrawOffsets();
    UpdateSegments();
}

/// Points keep their order, and heights stay in 0..1.
template <uint32_t Points, class Owner, uint32_t FirstId>
void FunctionHelper<Points, Owner, FirstId>::DrawOffsets() {
    const float amount = Self().Value(RandomAmount);
    for (uint32_t i = 1; i < lastPoint; ++i) {
        const float reach = amount * Self().Value(RandomX1 + i);
        const float high = std::min(pointX[i + 1] - pointX[i], reach);
        const float low =
            std::max(std::max(randomX[i - 1], 0.0f) + pointX[i - 1] - pointX[i], -reach);
        randomX[i] = Draw(low, high);
    }
    for (uint32_t i = 0; i <= lastPoint; ++i) {
        const float reach = amount * Self().Value(RandomY1 + i);
        randomY[i] = Draw(std::max(-pointY[i], -reach), std::min(1.0f - pointY[i], reach));
    }
    if (closedLoop)
        randomY[lastPoint] = randomY[0];
}

template <uint32_t Points, class Owner, uint32_t FirstId>
void FunctionHelper<Points, Owner, FirstId>::WriteFeedback(float x) {
    const uint32_t end = EndOfSegment(x);
    if (end > lastPoint) {
        WriteFeedback(lastPoint, 1.0f);
        return;
    }
    const float length = X(end) - X(end - 1);
    const float position = length > 0.0f ? (x - X(end - 1)) / length : 1.0f;
    WriteFeedback(end, std::clamp(position, 0.0f, 1.0f));
}

}  // namespace Quorvan::dsp
