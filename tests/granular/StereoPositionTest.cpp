#include "granular/StereoPosition.h"

#include "support/PlainParts.h"
#include "support/SeededClock.h"

namespace Quorvan::dsp {
namespace {

float Next(uint32_t& x) { return static_cast<float>(PlainDraw(x)) * 0x1p-32f; }

TEST(StereoPositionTest, FollowsTheControlAndItsRow) {
    StereoPosition position;
    position.Follow(0.5f, 0.25f, -1.0f, 0.2f, 0.5f, 0.4f);
    EXPECT_EQ(position.X(), 0.25f);
    EXPECT_EQ(position.Y(), 0.4f);
    position.Follow(0.8f, 1.0f, 0.7f, 0.6f, 1.0f, 0.9f);
    EXPECT_EQ(position.X(), 1.0f);
    EXPECT_EQ(position.Y(), 1.5f);  // the distance has no upper end
    EXPECT_EQ(position.ShownY(), 1.0f);
    position.Follow(-0.8f, 1.0f, -0.7f, 0.1f, 1.0f, -0.9f);
    EXPECT_EQ(position.X(), -1.0f);
    EXPECT_EQ(position.Y(), 0.0f);
    EXPECT_EQ(position.ShownX(), -1.0f);
}

TEST(StereoPositionTest, WalksInRandomStepsWithinItsBounds) {
    const FixedClock clock(99);
    StereoPosition position;
    position.Follow(0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f);
    uint32_t x = 99;
    position.StartWalk();
    float walkX = 2.0f * Next(x) - 1.0f, walkY = Next(x);
    EXPECT_EQ(position.X(), 0.0f);  // until the first step on its axis
    bool beyond = false, pulledBack = false;
    for (uint32_t i = 0; i < 20000; ++i) {
        position.Walk(9.0f, 0.7f, 0.4f);
        const float step = 9.0f * 0.33333334f * 0.1f, v = Next(x), before = walkX;
        if (v > 0.75f)
            walkX = std::clamp(walkX + step * 0.7f, -2.0f, 2.0f);
        else if (v >= 0.5f)
            walkX = std::clamp(walkX - step * 0.7f, -1.0f, 1.0f);
        else
            walkY = std::clamp(walkY + (v > 0.25f ? step : -step) * 0.4f, 0.0f, 2.0f);
        ASSERT_EQ(position.ShownX(), std::clamp(walkX, -1.0f, 1.0f)) << i;
        ASSERT_EQ(position.ShownY(), std::clamp(walkY, 0.0f, 1.0f)) << i;
        const float held = v >= 0.5f ? std::clamp(walkX, -1.0f, 1.0f) : walkY;
        ASSERT_EQ(v >= 0.5f ? position.X() : position.Y(), held) << i;
        beyond = beyond || walkX > 1.5f;
        pulledBack = pulledBack || (before > 1.3f && walkX == 1.0f);
    }
    EXPECT_TRUE(beyond && pulledBack);
}

}  // namespace
}  // namespace Quorvan::dsp
