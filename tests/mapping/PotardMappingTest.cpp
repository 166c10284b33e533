#include "basictools/math/mapping/CException.h"
#include "basictools/math/mapping/PotardKind.h"
#include "basictools/math/mapping/PotardMappingUtils.h"
#include "support/Test.h"

namespace Quorvan::MappingTools {
namespace {

using namespace PotardKind;

PotardMappingVariant Make(uint32_t kind, float x = 0.5f, float y = 0.5f) {
    return PotardMappingUtils::Create(kind, x, y);
}

using Curve = std::function<double(double)>;

/// One curve in double precision, written from its geometry, and its place in the variant.
struct Case {
    uint32_t kind, tag;
    float x, y;
    Curve curve;
    double low = 0.0, high = 1.0;  ///< ends of the output
};

Curve Rise(double k) {
    return [k](double x) { return std::expm1(x * k) / std::expm1(k); };
}
Curve Power(double p) {
    return [p](double x) { return std::pow(x, p); };
}
/// The mirror image through (0.5, 0.5) of a curve over the upper half.
Curve Odd(Curve upper) {
    return [upper](double x) {
        return 0.5 + std::copysign(0.5 * upper(std::fabs(2 * x - 1)), x - 0.5);
    };
}
/// A power that ends in (c, c), and its mirror image from there to the top.
Curve Meeting(double c, double p) {
    return [c, p](double x) {
        return x < c ? c * std::pow(x / c, p) : 1 - (1 - c) * std::pow((1 - x) / (1 - c), p);
    };
}
/// A line in the reciprocal from b down to a, as a fraction of the range.
Curve Reciprocal(double a, double b) {
    return [a, b](double x) { return (1 / (x / a + (1 - x) / b) - a) / (b - a); };
}

std::vector<Case> Cases() {
    const Curve line = [](double x) { return x; };
    const Curve topPower = [](double x) { return 1 - std::pow(1 - x, 3); };
    const Curve ratio = [](double x) { return x < 0.5 ? 1 / (8 - 14 * x) : 14 * x - 6; };
    const Curve knee = [](double x) { return x < 0.75 ? 0.2 * x / 0.75 : 1 - 3.2 * (1 - x); };
    return {{kRaw, 1, 0.0f, 0.0f, line},
            {kLinear, 1, 0.0f, 0.0f, line},
            {kPolynomial, 3, 4.0f, 0.5f, Power(4)},
            {kPolynomial, 3, 0.25f, 0.5f, Power(0.25)},
            {kInvPolynomial, 4, 3.0f, 0.5f, topPower},
            {kExponential, 5, 6.9f, 0.5f, Rise(6.9f)},
            {kExponential, 5, -3.0f, 0.5f, Rise(-3)},
            {kBipolarExp, 6, 4.0f, 0.5f, Odd(Rise(4))},
            {kBipolarPolynomial, 7, 3.0f, 0.5f, Odd(Power(3))},
            {kBipolarPolynomial, 7, 2.0f, 0.5f, Odd(Power(2))},
            {kBipolarVariableCenter, 8, 2.5f, 0.3f, Meeting(0.3f, 2.5)},
            {kFixedExponential, 5, 0.0f, 0.0f, Rise(4.429489)},
            {kEnveloppeTime, 9, 0.0f, 0.0f, nullptr},
            {kMixerTime, 10, 0.0f, 0.0f, nullptr},
            {kVuMeter, 11, 0.0f, 0.0f, nullptr},
            {kHarmonic, 12, 8.0f, 0.5f, ratio, 0.125, 8.0},
            {kReverse, 2, 0.0f, 0.0f, [](double x) { return 1 - x; }, 1.0, 0.0},
            {kPiecewiseLinear, 13, 0.2f, 0.5f, knee},
            {kInverse, 14, 2.0f, 50.0f, Reciprocal(2, 50), 1.0, 0.0},
            {kInverse, 14, -50.0f, -2.0f, Reciprocal(-50, -2), 1.0, 0.0},
            {kSemiToneToFreq, 15, 27.5f, 97.0f, [](double x) { return 27.5 * std::exp2(8 * x); },
             27.5, 7040.0}};
}

std::vector<float> Positions(uint32_t seed) {
    std::vector<float> positions = Noise(seed, 301);
    for (float& x : positions)
        x = std::fabs(x);
    positions.insert(positions.end(), {0.0f, 0.3f, 0.5f, 0.75f, 1.0f, 1e-30f});
    return positions;
}

TEST(PotardMappingTest, EveryKindFollowsItsFormulaAndItsInverse) {
    for (const Case& c : Cases()) {
        SCOPED_TRACE("kind " + std::to_string(c.kind) + " x " + std::to_string(c.x));
        const PotardMappingVariant held = Make(c.kind, c.x, c.y);
        const IPotardMapping& curve = *held.Get();
        EXPECT_EQ(held.Tag(), c.tag);
        EXPECT_EQ(curve.IsAbsolute(), c.kind == kHarmonic || c.kind == kSemiToneToFreq);
        // A few roundings of numbers as large as the largest value, more where reciprocals cancel.
        const double largest = std::max({1.0, c.low, c.high});
        const double tolerance = (c.kind == kInverse ? 3e-6 : 1e-6) * largest;
        for (const float x : Positions(c.kind)) {
            if (!c.curve)
                continue;
            EXPECT_NEAR(curve.Map(x), c.curve(x), tolerance) << x;
            // The inverse is tried on values: positions are lost where a curve is flat.
            const float value = static_cast<float>(c.low + (c.high - c.low) * double{x});
            EXPECT_NEAR(curve.Map(curve.Unmap(value)), value, 4.0 * tolerance) << value;
        }
    }
    for (const uint32_t kind : {kBipolarExp, kBipolarPolynomial, kHarmonic}) {  // exact centres
        const PotardMappingVariant held = Make(kind, 3.0f);
        EXPECT_EQ(held.Get()->Map(0.5f), kind == kHarmonic ? 1.0f : 0.5f);
        EXPECT_EQ(held.Get()->Unmap(held.Get()->Map(0.5f)), 0.5f);
    }
}

TEST(PotardMappingTest, TimeTablesHitTheirKnotsAndHoldTheirEnds) {
    for (const auto& [kind, pieces, index, here, next] :  // entries at index and behind it
         {std::tuple(kEnveloppeTime, 20.0f, 1.0f, 2.7507564e-4f, 1.0502888e-3f),
          {kEnveloppeTime, 20.0f, 13.0f, 0.09225037f, 0.15019131f},
          {kMixerTime, 9.0f, 7.0f, 0.28584823f, 0.55262184f}}) {
        const PotardMappingVariant held = Make(kind);
        const IPotardMapping& curve = *held.Get();
        const float spacing = 1.0f / pieces, at = index * spacing;
        EXPECT_NEAR(curve.Map(at), here, 1e-7f);
        EXPECT_NEAR(curve.Map(at + 0.25f * spacing), 0.75f * here + 0.25f * next, 1e-7f);
        for (float i = 0; i <= 4 * pieces; ++i) {  // knots and between
            const float x = 0.25f * spacing * i;
            EXPECT_NEAR(curve.Unmap(curve.Map(x)), x, 2e-6f);
        }
        for (const float outside : {-1.0f, -0.0f, 0.0f, 1.0f, 1.5f}) {
            EXPECT_EQ(curve.Map(outside), outside <= 0.0f ? 0.0f : 1.0f);
            EXPECT_EQ(curve.Unmap(outside), outside <= 0.0f ? 0.0f : 1.0f);
        }
        EXPECT_NEAR(curve.Map(std::nextafter(1.0f, 0.0f)), 1.0f, 1e-6f);
    }
}

}  // namespace
}  // namespace Quorvan::MappingTools
