#include <gtest/gtest.h>

#include "primitives/Clock.h"
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

}  // namespace
}  // namespace Quorvan::prims
