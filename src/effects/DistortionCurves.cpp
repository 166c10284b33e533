#include "effects/DistortionCurves.h"

#include <algorithm>
#include <cmath>

namespace Quorvan::dsp {

namespace {

using Symmetry = PiecewiseCurve::Symmetry;
constexpr float kEndless = PiecewiseCurve::kUnbounded;

float SignOf(float x) { return x < 0.0f ? -1.0f : 1.0f; }

float Rational(float x) {
    return 2.0501223f * x / (2.055593f * std::abs(0.83233666f * x) + 0.5536444f);
}

float SoftClip(float x) {
    const float a = std::abs(x);
    const float bent = 2.0f - 3.0f * a;
    const float knee = (3.0f - bent * bent) / 3.0f;
    const float y = a > 0.6666667f ? 1.0f : a >= 0.33333334f ? knee : 2.0f * a;
    return SignOf(x) * y;
}

float HardClip(float x) {
    const float a = std::abs(x);
    return SignOf(x) * (a > 0.5f ? 1.0f : 2.0f * a);
}

float Staircase(float x) {
    const float w = 2.0f * std::abs(x) - 0.9411765f;
    const float inside = w < 1.0f ? w : 1.0f;
    const int32_t level = static_cast<int32_t>((inside + 1.0f) * 135.995f) / 17;
    return SignOf(x) * (w >= 1.0f ? 1.0f : static_cast<float>(level) * 0.0625f);
}

template <class Curve>
void ApplyToAll(float* samples, uint32_t count, Curve curve) {
    for (uint32_t i = 0; i < count; ++i)
        samples[i] = curve(samples[i]);
}

PiecewiseCurve OpenBelow() {
    constexpr float tension = -4.5781655f;
    PiecewiseCurve curve(Symmetry::kNone);
    return curve.Tension(0.0f, 0.0f, 0.0f, -1.0f, -1.0f, tension)
        .Tension(1.0f, 0.0f, 0.0f, 1.0f, 1.0f, tension)
        .Level(kEndless, 1.0f);
}

PiecewiseCurve FallingEnds() {
    PiecewiseCurve curve(Symmetry::kNone);
    return curve.Level(-1.0f, -0.5821325f)
        .Tension(-0.9375f, -1.0f, -0.5821325f, -0.9375f, -0.60230547f, 2.0f)
        .Tension(-0.25f, -0.9375f, -0.60230547f, -0.25f, -1.0f, 1.2114142f)
        .Tension(0.0f, -0.25f, -1.0f, 0.0f, 0.0f, 0.7714677f)
        .Line(0.058495f, 0.0f, 0.0f, 5.4193144f)
        .Tension(0.718663f, 0.058495f, 0.3170028f, 0.718663f, 1.0f, -2.2265773f)
        .Tension(1.0f, 0.718663f, 1.0f, 1.0f, 0.9052924f, -0.34447402f)
        .Level(kEndless, 0.9052924f);
}

PiecewiseCurve TwoSides() {
    PiecewiseCurve curve(Symmetry::kNone);
    return curve.Level(-0.5f, -1.0f)
        .Tension(-0.125f, -0.5f, -1.0f, -0.125f, -0.5f, -2.6771033f)
        .Line(0.0f, 0.0f, 0.0f, 4.0f)
        .Line(0.375f, 0.0f, 0.0f, 1.3333334f)
        .Tension(0.625f, 0.375f, 0.5f, 0.625f, 1.0f, -3.3231502f)
        .Level(kEndless, 1.0f);
}

PiecewiseCurve Ripple() {
    constexpr float width = 0.05625f;
    constexpr float height = 0.09375f;
    constexpr float tension = 3.6384306f;
    PiecewiseCurve curve(Symmetry::kOdd);
    for (uint32_t k = 0; k < 10; ++k) {
        const auto from = static_cast<float>(k);
        const auto to = static_cast<float>(k + 1);
        curve.Tension(width * to, width * from, height * from, width * to, height * to,
                      k % 2 == 0 ? -tension : tension);
    }
    return curve.Tension(1.0f, 0.5625f, 0.9375f, 1.0f, 1.0f, -15.788583f).Level(kEndless, 1.0f);
}

/// Over the remainder of half a unit: a curved wave below 0, a triangle above.
PiecewiseCurve Fold() {
    constexpr float tension = 4.7152257f;
    PiecewiseCurve curve(Symmetry::kFold);
    return curve.Tension(-0.25f, -0.25f, -1.0f, -0.5f, 0.0f, tension)
        .Tension(0.0f, 0.0f, 0.0f, -0.25f, -1.0f, -tension)
        .Line(0.25f, 0.0f, 0.0f, 4.0f)
        .Line(kEndless, 0.5f, 0.0f, -4.0f);
}

PiecewiseCurve GapBehindBump() {
    PiecewiseCurve curve(Symmetry::kOdd);
    return curve.Tension(0.125f, 0.0f, 0.0f, 0.125f, 0.25f, -4.72403f)
        .Tension(0.25f, 0.125f, 0.25f, 0.25f, 0.0f, 4.72403f)
        .Tension(1.0f, 0.25f, 0.0f, 1.0f, 1.0f, -13.693368f)
        .Level(kEndless, 1.0f);
}

PiecewiseCurve Bulge() {
    PiecewiseCurve curve(Symmetry::kOdd);
    return curve.Tension(0.06552262f, 0.0f, 0.0f, 0.06552262f, 0.29668674f, -1.9456403f)
        .Tension(0.079563186f, 0.06552262f, 0.29668674f, 0.079563186f, 0.49246988f, 4.5245762f)
        .Tension(0.3978159f, 0.079563186f, 0.49246988f, 0.3978159f, 0.93524098f, -1.4062476f)
        .Tension(0.54446173f, 0.3978159f, 0.93524098f, 0.54446173f, 1.0f, -0.67869568f)
        .Level(kEndless, 1.0f);
}

PiecewiseCurve PlateauAndStep() {
    PiecewiseCurve curve(Symmetry::kOdd);
    return curve.Tension(0.125f, 0.0f, 0.0f, 0.125f, 0.25f, -2.999285f)
        .Level(0.1875f, 0.25f)
        .Line(0.5625f, 0.1875f, 0.25f, 2.0f)
        .Level(kEndless, 1.0f);
}

PiecewiseCurve Notches() {
    PiecewiseCurve curve(Symmetry::kOdd);
    return curve.Line(0.1875f, 0.0f, 0.0f, 2.0f)
        .Line(0.25f, 0.1875f, 0.375f, -2.0f)
        .Line(0.375f, 0.25f, 0.25f, 4.0f)
        .Tension(1.0f, 0.375f, 0.75f, 1.0f, 1.0f, -10.496884f)
        .Level(kEndless, 1.0f);
}

}  // namespace

const DistortionCurves& DistortionCurves::Instance() {
    static const DistortionCurves instance;
    return instance;
}

DistortionCurves::DistortionCurves()
    : piecewise{OpenBelow(),     FallingEnds(), TwoSides(),       Ripple(), Fold(),
                GapBehindBump(), Bulge(),       PlateauAndStep(), Notches()} {
    constexpr std::array<size_t, 9> types{3, 4, 5, 6, 7, 9, 10, 11, 12};
    for (size_t k = 0; k < types.size(); ++k)
        curves[types[k]] = &piecewise[k];
}

void DistortionCurves::Apply(int32_t type, float* samples, uint32_t count) const {
    if (const PiecewiseCurve* curve = curves[static_cast<size_t>(type)])
        curve->Apply(samples, count);
    else if (type == 0)
        ApplyToAll(samples, count, Rational);
    else if (type == 1)
        ApplyToAll(samples, count, SoftClip);
    else if (type == 2)
        ApplyToAll(samples, count, HardClip);
    else
        ApplyToAll(samples, count, Staircase);
}

}  // namespace Quorvan::dsp
