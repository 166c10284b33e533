#include "primitives/PolynomialSine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace Quorvan::dsp {
namespace {

TEST(PolynomialSineTest, FollowsTheSineOverATurn) {
    double worst = 0.0;
    for (int i = 0; i <= 1 << 20; ++i) {
        const float p = static_cast<float>(i) / static_cast<float>(1 << 20);
        const double exact = std::sin(2.0 * std::numbers::pi * static_cast<double>(p));
        worst = std::max(worst, std::abs(static_cast<double>(PolynomialSineOfTurn(p)) - exact));
    }
    EXPECT_LT(worst, 3e-7);
    for (const float zero : {0.0f, 0.5f, 1.0f})
        EXPECT_EQ(PolynomialSineOfTurn(zero), 0.0f);
}

}  // namespace
}  // namespace Quorvan::dsp
