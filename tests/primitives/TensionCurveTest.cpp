#include "primitives/TensionCurve.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Quorvan::dsp {
namespace {

// The curve itself is compared with its formula where it is drawn: FunctionGeneratorTest.
TEST(TensionCurveTest, DegenerateCases) {
    EXPECT_EQ(TensionCurve(1.0f, 2.0f, 1.0f, 4.0f, 1.0f, 5.0f), 3.0f);
    for (const auto& [x, tension] : {std::pair{0.9f, 1000.0f},
                                     {0.1f, -1000.0f},
                                     {std::nanf(""), 3.0f},
                                     {std::nanf(""), -3.0f}})
        EXPECT_EQ(TensionCurve(0.0f, 2.0f, 1.0f, 4.0f, x, tension), tension > 0.0f ? 2.0f : 4.0f);
}

}  // namespace
}  // namespace Quorvan::dsp
