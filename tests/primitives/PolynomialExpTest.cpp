#include "primitives/PolynomialExp.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace Quorvan::dsp {
namespace {

TEST(PolynomialExpTest, FollowsTheLibraryWithinTheStatedErrors) {
    double worst = 0.0, worstLessOne = 0.0;
    for (int32_t k = -870000; k <= 870000; ++k) {
        const float x = static_cast<float>(k) * 1.0e-4f;
        const double wanted = std::exp(static_cast<double>(x));
        worst = std::max(worst, std::abs(static_cast<double>(PolynomialExp(x)) / wanted - 1.0));
        if (k != 0)
            worstLessOne = std::max(worstLessOne, std::abs(static_cast<double>(PolynomialExpm1(x)) /
                                                               std::expm1(static_cast<double>(x)) -
                                                           1.0));
    }
    EXPECT_LT(worst, 2.0e-7);
    EXPECT_LT(worstLessOne, 4.0e-7);
    EXPECT_NEAR(PolynomialExpm1(1.0e-20f), 1.0e-20f, 1.0e-26f);
}

TEST(PolynomialExpTest, EndsAreHeld) {
    EXPECT_EQ(PolynomialExp(0.0f), 1.0f);
    EXPECT_EQ(PolynomialExpm1(0.0f), 0.0f);
    EXPECT_EQ(PolynomialExp(-1.0e9f), 0.0f);
    EXPECT_EQ(PolynomialExpm1(-1.0e9f), -1.0f);
    EXPECT_EQ(PolynomialExp(1.0e9f), PolynomialExp(88.37626f));
    EXPECT_TRUE(std::isfinite(PolynomialExp(1.0e9f)));
}

TEST(PolynomialExpTest, FloorGoesDownOnBothSides) {
    EXPECT_EQ(FloorByTruncation(2.5f), 2.0f);
    EXPECT_EQ(FloorByTruncation(-2.5f), -3.0f);
    EXPECT_EQ(FloorByTruncation(-2.0f), -2.0f);
}

}  // namespace
}  // namespace Quorvan::dsp
