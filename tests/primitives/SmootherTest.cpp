#include "primitives/SmootherLPF.h"
#include "primitives/SmootherSRL.h"
#include "support/PlainParts.h"

namespace Quorvan::dsp {
namespace {

TEST(SmootherTest, LowPassFollowsItsExponentialAndArrives) {
    for (const uint32_t stepLength : {1u, 48u}) {
        SmootherLPF smoother(0.02);
        test::SetUp({&smoother}, 48000.0f, stepLength);
        smoother.SetStartAndTarget(2.0f, -1.0f);
        const double ticksInTime = 0.02 * 48000.0 / stepLength;
        for (int n = 1; n <= 3 * static_cast<int>(ticksInTime); ++n)
            ASSERT_NEAR(smoother.Tick(), 3.0 * std::exp(-5.0 * n / ticksInTime) - 1.0, 1e-6) << n;
        EXPECT_FALSE(smoother.IsAtRest());
        // The glide ends where a step falls under a millionth of a millionth of the target.
        for (int n = 0; n < 5 * static_cast<int>(ticksInTime); ++n)
            smoother.Tick();
        EXPECT_TRUE(smoother.IsAtRestAt(-1.0));
    }
}

TEST(SmootherTest, SlewLimiterTakesEqualStepsAndLandsOnTheTarget) {
    SmootherSRL smoother(0.01);  // at 1 kHz 5 ticks of two samples for a distance of 1
    smoother.range = 2.0;        // and so 0.4 a tick
    test::SetUp({&smoother}, 1000.0f, 2);
    for (const float to : {1.0f, -0.9f}) {
        const float from = static_cast<float>(smoother.current);
        smoother.SetTarget(to);
        const float step = to > from ? 0.4f : -0.4f;
        int n = 1;
        for (; std::fabs(to - from) > 0.4f * static_cast<float>(n); ++n)
            EXPECT_FLOAT_EQ(smoother.Tick(), from + step * static_cast<float>(n));
        EXPECT_EQ(smoother.Tick(), to);
        EXPECT_TRUE(smoother.IsAtRest());
    }
    smoother.SetTarget(0.1f);  // state is held in single precision
    EXPECT_EQ(static_cast<double>(smoother.Tick()), smoother.current);
}

}  // namespace
}  // namespace Quorvan::dsp
