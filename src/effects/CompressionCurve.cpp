#include "effects/CompressionCurve.h"

#include <algorithm>
#include <array>
#include <cmath>

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

void CompressionCurve::LevelsToGainsDb(float* values, uint32_t count) const {
    const CompressionCurve law = *this;  // which the values cannot lie over
    for (uint32_t at = 0; at < count; at += kGroup) {
        float* const levels = values + at;
        const uint32_t n = std::min(kGroup, count - at);
        if (LeavesAll(levels, n)) {
            std::fill_n(levels, n, 0.0f);
            continue;
        }
        std::array<float, kGroup> db;
        for (uint32_t i = 0; i < n; ++i)
            db[i] = levels[i] >= kFloorLevel ? kDecibelsPerNeper * std::log(levels[i]) : kFloorDb;
        for (uint32_t i = 0; i < n; ++i)
            levels[i] = law.GainDb(levels[i], db[i]);
    }
}

/// The gain at a level, which also comes in dB. All cases are worked out, so that loops become
/// vector code.
float CompressionCurve::GainDb(float level, float db) const {
    const float above = db - threshold;
    const float twice = 2.0f * above;
    const float outside = twice > knee ? above * slopeMinusOne : 0.0f;
    const float e = knee * 0.5f + above;
    const float inside = kneeScale * e * slopeMinusOne * e;
    const float reached = kneeIsZero || std::abs(twice) > knee ? outside : inside;
    return level < quietLevel ? 0.0f : reached;
}

float CompressionCurve::MakeupGain() const {
    const float halfKnee = knee * 0.5f;
    if (std::abs(threshold) >= halfKnee)
        return std::pow(10.0f, threshold * kMakeupShare * slopeMinusOne);
    const float inside = halfKnee - threshold;
    return std::pow(10.0f, -kHalfMakeupShare / knee * slopeMinusOne * (inside * inside));
}

}  // namespace Quorvan::dsp
