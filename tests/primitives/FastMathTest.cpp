#include "primitives/FastMath.h"

#include "primitives/Clock.h"
#include "primitives/PolynomialExp.h"
#include "primitives/PolynomialSine.h"
#include "support/Test.h"

namespace Quorvan::dsp {
namespace {

double SineOfTurns(double turns) { return std::sin(2.0 * std::numbers::pi * turns); }

/// An approximation, what it stands for over a range, and its stated error.
struct Approximation {
    const char* name;
    float (*found)(float);
    double (*wanted)(double);
    double low, high, error;
    bool relative;
};

constexpr Approximation kAll[] = {
    {"PolynomialExp", PolynomialExp, std::exp, -87.0, 87.0, 2e-7, true},
    {"PolynomialExpm1", PolynomialExpm1, std::expm1, -87.0, 87.0, 4e-7, true},
    {"PolynomialSineOfQuarter", PolynomialSineOfQuarter, SineOfTurns, -0.25, 0.25, 2e-7, false},
    {"PolynomialSineOfTurn", PolynomialSineOfTurn, SineOfTurns, 0.0, 1.0, 3e-7, false},
    {"FastPow2", FastPow2, std::exp2, -125.9, 124.1, 7.5e-5, true},
    {"FastExp", FastExp, std::exp, -80.0, 80.0, 7.5e-5, true},
    {"FastSin", FastSin, std::sin, -3.14159, 3.14159, 0.0561, false},
    {"FastSinOfTurn", FastSinOfTurn, SineOfTurns, 0.0, 3.0, 0.0561, false}};

TEST(FastMathTest, ApproximationsKeepTheirErrors) {
    constexpr int kSteps = 500000;
    for (const Approximation& a : kAll) {
        double worst = 0.0;
        for (int k = 0; k <= kSteps; ++k) {
            const auto x = static_cast<float>(a.low + (a.high - a.low) * k / kSteps);
            const double wanted = a.wanted(double{x});
            const double off = std::abs(double{a.found(x)} - wanted);
            if (off > 0.0)
                worst = std::max(worst, a.relative ? off / std::abs(wanted) : off);
        }
        EXPECT_LT(worst, a.error) << a.name;
    }
}

TEST(FastMathTest, EndsAndMiddlesAreExact) {
    EXPECT_EQ(PolynomialExp(0.0f), 1.0f);
    EXPECT_EQ(PolynomialExpm1(0.0f), 0.0f);
    EXPECT_NEAR(PolynomialExpm1(1.0e-20f), 1.0e-20f, 1.0e-26f);
    EXPECT_EQ(PolynomialExp(-1.0e9f), 0.0f);
    EXPECT_EQ(PolynomialExpm1(-1.0e9f), -1.0f);
    EXPECT_EQ(PolynomialExp(1.0e9f), PolynomialExp(88.37626f));
    EXPECT_TRUE(std::isfinite(PolynomialExp(1.0e9f)));
    for (const float turns : {-0.25f, 0.0f, 0.25f})
        EXPECT_EQ(PolynomialSineOfQuarter(turns), 4.0f * turns);
    EXPECT_EQ(FastPow2(-1e9f), FastPow2(-126.0f));
    for (const auto& [x, floor] : {std::pair{2.5f, 2.0f}, {-2.5f, -3.0f}, {-2.0f, -2.0f}})
        EXPECT_EQ(FloorByTruncation(x), floor);
}

TEST(ClockTest, ReplacementGivesTheSeedsUntilItIsTakenBack) {
    struct Fixed final : prims::ClockSource {
        uint64_t Microseconds() override { return now; }
        uint64_t now = 0;
    } fixed;
    EXPECT_EQ(prims::ReplaceClock(&fixed), nullptr);
    EXPECT_EQ(prims::SeedFromClock(), 1u);  // 0 would lock a xorshift
    fixed.now = 0x700000005u;
    EXPECT_EQ(prims::SeedFromClock(), 5u);
    EXPECT_EQ(prims::ReplaceClock(nullptr), &fixed);
}

}  // namespace
}  // namespace Quorvan::dsp
