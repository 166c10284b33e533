#pragma once

#include <cstdint>

#include "framework/ParameterTable.h"

namespace Quorvan::dsp {

/// A curve over 0..1 through up to Points points, with a tension on each segment between two.
///
/// Parameters  from FirstId on
///             +0 LastActivePointIndex, +1 RandomAmount, +2 Bipolar, +3 Scale -1..1: height of the
///             curve about 0.5
///             +4 FeedbackNextPoint, +5 FeedbackPositionInSegment: written
///             then PointX, PointY, Tension -1000..1000 (one less), RandomX, RandomY, each numbered
///             from 1
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

}  // namespace Quorvan::dsp
