#include <gtest/gtest.h>

#include <cmath>

#include "primitives/Clock.h"
#include "primitives/FastMath.h"
#include "primitives/Xorshift.h"

namespace Quorvan::prims {
namespace {

TEST(XorshiftTest, SequenceIsThePublishedOne) {
    uint32_t state = 1;
    for (const uint32_t expected : {270369u, 67634689u, 2647435461u, 307599695u, 2398689233u})
        EXPECT_EQ(XorshiftStep(state), expected);
    state = 1;
    EXPECT_EQ(XorshiftUniform(state), 270369.0f / 4294967296.0f);
}

TEST(ClockTest, ReplacementGivesTheSeedsUntilItIsTakenBack) {
    struct Fixed final : ClockSource {
        uint64_t Microseconds() override { return now; }
        uint64_t now = 0;
    } first, second;
    EXPECT_EQ(ReplaceClock(&first), nullptr);
    EXPECT_EQ(SeedFromClock(), 1u);  // 0 would lock a xorshift
    first.now = 0x700000005u;
    EXPECT_EQ(SeedFromClock(), 5u);
    EXPECT_EQ(ReplaceClock(&second), &first);
    second.now = 9;
    EXPECT_EQ(SeedFromClock(), 9u);
    EXPECT_EQ(ReplaceClock(nullptr), &second);
    const uint32_t now = SeedFromClock();
    EXPECT_LT(SeedFromClock() - now, 1000000u);  // the system's clock, in microseconds, goes on
}

TEST(FastMathTest, ApproximationsKeepTheirErrorBounds) {
    for (int i = 0; i <= 5000; ++i) {
        const float unit = static_cast<float>(i) / 5000.0f;
        const float x = -125.9f + 250.0f * unit;
        EXPECT_NEAR(dsp::FastPow2(x) / std::exp2(double{x}), 1.0, 6e-5) << x;
        const float angle = 6.2831855f * (unit - 0.5f);
        EXPECT_NEAR(dsp::FastSin(angle), std::sin(angle), 0.0561) << angle;
        EXPECT_NEAR(dsp::FastSinOfTurn(3.0f * unit), std::sin(6.0 * M_PI * double{unit}), 0.0561);
    }
    EXPECT_EQ(dsp::FastPow2(-1e9f), dsp::FastPow2(-126.0f));
    EXPECT_NEAR(dsp::FastExp(1.0f), 2.71828f, 2e-4f);
}

}  // namespace
}  // namespace Quorvan::prims
