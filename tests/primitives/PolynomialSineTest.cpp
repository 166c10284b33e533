#include "primitives/PolynomialSine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Quorvan::dsp {
namespace {

double ErrorOf(float got, float turns) {
    return std::abs(double{got} - std::sin(2.0 * std::numbers::pi * double{turns}));
}

TEST(PolynomialSineTest, FollowsTheLibraryWithinTheStatedErrors) {
    double quarter = 0.0, turn = 0.0;
    for (int32_t k = -250000; k <= 250000; ++k) {
        const float a = static_cast<float>(k) * 1.0e-6f,
                    b = static_cast<float>(k + 250000) * 2.0e-6f;
        quarter = std::max(quarter, ErrorOf(PolynomialSineOfQuarter(a), a));
        turn = std::max(turn, ErrorOf(PolynomialSineOfTurn(b), b));
    }
    EXPECT_LT(quarter, 2.0e-7);
    EXPECT_LT(turn, 3.0e-7);
    EXPECT_EQ(PolynomialSineOfQuarter(0.0f), 0.0f);
    EXPECT_EQ(PolynomialSineOfQuarter(0.25f), 1.0f);
    EXPECT_EQ(PolynomialSineOfQuarter(-0.25f), -1.0f);
}

}  // namespace
}  // namespace Quorvan::dsp
