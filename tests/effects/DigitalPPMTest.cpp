#include "effects/DigitalPPM.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "support/ModuleRig.h"
#include "support/TestSignals.h"

namespace Quorvan::dsp {
namespace {

using test::Channel;

struct Rig : test::ModuleRig<DigitalPPM> {
    explicit Rig(float rate = 48000.0f, uint32_t block = 48)
        : test::ModuleRig<DigitalPPM>(rate, block, "MasterVuL") {}
    float After(const Channel& signal) {
        RunMono(signal);
        return module.GetParameterNormalized(DigitalPPM::Level);
    }
};

// While falling, the meter is a one-pole low-pass of the rectified signal.
TEST(DigitalPPMTest, MatchesAPlainModel) {
    const Channel signal = test::Bursts(3, 96000, 1.3f);
    double level = 0.0;
    Rig rig(44100.0f, 44);
    for (size_t at = 0; at + 440 <= signal.size(); at += 440) {
        for (size_t i = at; i < at + 440; ++i) {
            const double a = std::abs(static_cast<double>(signal[i]));
            const double share = 1.0 / (44100.0 * 1.7 / std::log(10.0));
            level = a > level ? a : level * std::exp(-share) + a * share;
        }
        const auto first = signal.begin() + static_cast<std::ptrdiff_t>(at);
        ASSERT_NEAR(static_cast<double>(rig.After(Channel(first, first + 440))),
                    std::min(level, 1.0), 1.0e-3 * level);
    }
    rig.module.Reset(false);
    EXPECT_EQ(rig.After(Channel(44)), 0.0f);
}

TEST(DigitalPPMTest, ABlockWithoutSamplesShowsZero) {
    Rig rig;
    EXPECT_EQ(rig.After(Channel(48, 0.5f)), 0.5f);
    ProcessBlock empty;
    EXPECT_TRUE(rig.module.Process(empty));
    EXPECT_EQ(rig.module.GetParameterNormalized(DigitalPPM::Level), 0.0f);
    EXPECT_NEAR(rig.After(Channel(48)), 0.5f, 0.001f);
}

}  // namespace
}  // namespace Quorvan::dsp
