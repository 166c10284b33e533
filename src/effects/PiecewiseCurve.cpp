#include "effects/PiecewiseCurve.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "primitives/PolynomialExp.h"

namespace Quorvan::dsp {

namespace {

/// Far out the fold has no digits left behind the point; held here, the result is that of a
/// multiple.
constexpr float kLargestFold = 4194304.0f;

template <PiecewiseCurve::Symmetry kForm>
float ReduceArgument(float x) {
    if constexpr (kForm == PiecewiseCurve::Symmetry::kOdd)
        return std::abs(x);
    if constexpr (kForm == PiecewiseCurve::Symmetry::kFold) {
        const float twice = 2.0f * x;
        const float low = twice > -kLargestFold ? twice : -kLargestFold;
        const float held = low < kLargestFold ? low : kLargestFold;
        return (held - static_cast<float>(static_cast<int32_t>(held))) * 0.5f;
    }
    return x;
}

}  // namespace

PiecewiseCurve& PiecewiseCurve::Line(float end, float x, float y, float slope) {
    ends.push_back(end);
    pieces.push_back({x, y, slope, 0.0f, 0.0f});
    return *this;
}

PiecewiseCurve& PiecewiseCurve::Tension(float end, float x0, float y0, float x1, float y1,
                                        float tension) {
    // The exponential starts at its steepest end and decays towards the other.
    const bool fromEnd = tension > 0.0f;
    const double strength = std::abs(static_cast<double>(tension));
    const double rise =
        static_cast<double>(fromEnd ? y0 : y1) - static_cast<double>(fromEnd ? y1 : y0);
    const double span = static_cast<double>(x1) - static_cast<double>(x0);
    ends.push_back(end);
    pieces.push_back({fromEnd ? x1 : x0, fromEnd ? y1 : y0, 0.0f,
                      static_cast<float>(rise / std::expm1(-strength)),
                      static_cast<float>(static_cast<double>(tension) / span)});
    return *this;
}

void PiecewiseCurve::Apply(float* samples, uint32_t count) const {
    if (symmetry == Symmetry::kOdd)
        ApplyForm<Symmetry::kOdd>(samples, count);
    else if (symmetry == Symmetry::kFold)
        ApplyForm<Symmetry::kFold>(samples, count);
    else
        ApplyForm<Symmetry::kNone>(samples, count);
}

template <PiecewiseCurve::Symmetry kForm>
void PiecewiseCurve::ApplyForm(float* samples, uint32_t count) const {
    for (uint32_t at = 0; at < count; at += kChunk)
        ApplyChunk<kForm>(samples + at, std::min(kChunk, count - at));
}

/// Several short passes, so that all but the one that reads the table run in vectors.
template <PiecewiseCurve::Symmetry kForm>
void PiecewiseCurve::ApplyChunk(float* samples, uint32_t count) const {
    std::array<float, kChunk> x, exponent, base, weight;
    std::array<int32_t, kChunk> index{};
    for (uint32_t i = 0; i < count; ++i)
        x[i] = ReduceArgument<kForm>(samples[i]);
    for (size_t k = 0; k + 1 < ends.size(); ++k) {
        const float end = ends[k];
        for (uint32_t i = 0; i < count; ++i)
            index[i] += x[i] >= end ? 1 : 0;
    }
    for (uint32_t i = 0; i < count; ++i) {
        const Piece& piece = pieces[static_cast<size_t>(index[i])];
        const float d = x[i] - piece.origin;
        exponent[i] = d * piece.rate;
        base[i] = piece.value + piece.slope * d;
        weight[i] = piece.weight;
    }
    for (uint32_t i = 0; i < count; ++i) {
        const float y = base[i] + weight[i] * PolynomialExpm1(exponent[i]);
        const float sign = kForm == Symmetry::kOdd && samples[i] < 0.0f ? -1.0f : 1.0f;
        samples[i] = sign * y;
    }
}

}  // namespace Quorvan::dsp
