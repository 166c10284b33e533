#include "primitives/TensionCurve.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Quorvan::dsp {
namespace {

TEST(TensionCurveTest, JoinsItsEndsOnTheBentSide) {
    for (const float tension : {-20.0f, -3.0f, -0.01f, 0.0f, 0.01f, 3.0f, 20.0f}) {
        const auto curve = [tension](float x) {
            return TensionCurve(2.0f, 5.0f, 4.0f, -1.0f, x, tension);
        };
        EXPECT_NEAR(curve(2.0f), 5.0f, 1.0e-5f) << tension;
        EXPECT_NEAR(curve(4.0f), -1.0f, 1.0e-5f) << tension;
        EXPECT_EQ(curve(3.0f) > 2.0f, tension > 0.0f)
            << tension;  // positive: leaves the start slowly
        // The tension is the logarithm of the ratio of the slopes at the ends.
        const float start = curve(2.001f) - curve(2.0f), end = curve(4.0f) - curve(3.999f);
        if (std::abs(tension) == 3.0f) {
            EXPECT_NEAR(std::log(end / start), tension, 0.02f);
        }
    }
}

TEST(TensionCurveTest, MirrorsWithItsSign) {
    for (float x = 0.0f; x <= 1.0f; x += 0.0625f)
        EXPECT_NEAR(TensionCurve(0.0f, 0.0f, 1.0f, 1.0f, x, 4.0f),
                    1.0f - TensionCurve(0.0f, 0.0f, 1.0f, 1.0f, 1.0f - x, -4.0f), 1.0e-6f);
}

TEST(TensionCurveTest, DegenerateCases) {
    EXPECT_EQ(TensionCurve(1.0f, 2.0f, 1.0f, 4.0f, 1.0f, 5.0f), 3.0f);
    EXPECT_EQ(TensionCurve(0.0f, 2.0f, 1.0f, 4.0f, 0.9f, 1000.0f), 2.0f);
    EXPECT_EQ(TensionCurve(0.0f, 2.0f, 1.0f, 4.0f, 0.1f, -1000.0f), 4.0f);
    EXPECT_EQ(TensionCurve(0.0f, 2.0f, 1.0f, 4.0f, std::nanf(""), 3.0f), 2.0f);
    EXPECT_EQ(TensionCurve(0.0f, 2.0f, 1.0f, 4.0f, std::nanf(""), -3.0f), 4.0f);
}

}  // namespace
}  // namespace Quorvan::dsp
