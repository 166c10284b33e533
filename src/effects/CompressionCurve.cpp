#include "effects/CompressionCurve.h"

namespace Quorvan::dsp {

namespace {

constexpr float kQuietMargin = 0.9999f;  // 0.0009 dB, some hundred times the rounding of the curve
constexpr float kMakeupShare = 0.0353555f;       // 0.05 / sqrt(2)
constexpr float kHalfMakeupShare = 0.01767775f;  // for the knee's square

}  // namespace

CompressionCurve::CompressionCurve(float thresholdDb, float slope, float kneeDb)
    : threshold(thresholdDb),
      slopeMinusOne(slope - 1.0f),
      knee(kneeDb),
      kneeIsZero(kneeDb == 0.0f),
      kneeScale(kneeIsZero ? 0.0f : 0.5f / kneeDb) {
    const float kneeStart = threshold - 0.5f * knee;
    if (kneeStart > kFloorDb)
        quietLevel = std::exp(kneeStart / kDecibelsPerNeper) * kQuietMargin;
}

float CompressionCurve::MakeupGain() const {
    const float halfKnee = knee * 0.5f;
    if (std::abs(threshold) >= halfKnee)
        return std::pow(10.0f, threshold * kMakeupShare * slopeMinusOne);
    const float inside = halfKnee - threshold;
    return std::pow(10.0f, -kHalfMakeupShare / knee * slopeMinusOne * (inside * inside));
}

}  // namespace Quorvan::dsp
