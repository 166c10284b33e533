#include "slots/WithDryWet.h"

#include <gtest/gtest.h>

#include <cmath>

#include "effects/CompensatedMultiDist.h"
#include "support/ModuleRig.h"
#include "support/TestSignals.h"

namespace Quorvan::engine {
namespace {

using test::Channel;
using test::Stereo;
using Mixed = WithDryWet<Processor::CompensatedMultiDist, 0, 2, 0>;

TEST(WithDryWetTest, CrossfadesTheChildWithItsInput) {
    const Stereo input{test::Noise(1, 4800), test::Noise(2, 4800)};
    test::ModuleRig<Processor::CompensatedMultiDist> alone(48000.0f, 48, "");
    alone.Modulate(2, 0.3f);
    const Stereo wet = alone.Run(input);

    test::ModuleRig<Mixed> mixed(48000.0f, 48, "");
    mixed.Modulate(2, 0.3f);   // Drive of the child
    mixed.Modulate(3, 0.25f);  // DryWet
    mixed.module.SetParameterValue(Mixed::DryWet, 0.5f);
    mixed.module.Reset(false);
    const Stereo output = mixed.Run(input);
    double share = 0.5;  // a reset jumps to the mix, from where the row makes it glide
    for (size_t i = 0; i < 4800; ++i) {
        share += (0.75 - share) * (1.0 - std::exp(-5.0 / 480.0));
        const auto w = static_cast<float>(share);
        for (size_t c = 0; c < 2; ++c)
            ASSERT_NEAR(output[c][i], (1.0f - w) * input[c][i] + w * wet[c][i], 1.0e-5f) << i;
    }
}

}  // namespace
}  // namespace Quorvan::engine
