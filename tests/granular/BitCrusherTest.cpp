#include "granular/BitCrusher.h"

#include "support/ModuleRig.h"
#include "support/Test.h"

namespace Quorvan::dsp {
namespace {

using Rig = ModuleRig<BitCrusher>;

constexpr float kRate = 48000.0f;

struct FullyWet : Rig {
    FullyWet(float bits, float divisor, uint32_t block = 48) : Rig(kRate, block, "BitCrusher") {
        module.SetParameterValue(BitCrusher::Wet, 1.0f);
        module.SetParameterValue(BitCrusher::Bitdepth, bits);
        module.SetParameterValue(BitCrusher::Downsample, divisor);
        module.Reset(true);
    }
};

/// One run of the wet path, sample by sample in double precision.
struct Model {
    double bits, divisor, drive;
    bool stereo;
    double dc[2] = {}, held[2] = {}, slope[2] = {};
    double phase = 0.0;

    Stereo Run(const Stereo& input) {
        const double rate = kRate, corner = 10.0 * std::numbers::pi;
        const double period = divisor > 1.0 ? std::max(1.0, rate / 44100.0 * divisor) : 1.0;
        Stereo output = input;
        for (size_t i = 0; i < input[0].size(); ++i) {
            phase += 1.0;
            const bool takes = phase > period;
            while (phase > period)
                phase -= period;
            for (size_t c = 0; c < (stereo ? 2u : 1u); ++c) {
                // y[n] = g (x[n] - x[n - 1]) + p y[n - 1], in the form with one state.
                const double v = static_cast<double>(input[c][i]) * drive * rate / (rate + corner);
                const double h = v + dc[c];
                dc[c] = h * (rate - corner) / (rate + corner) - v;
                if (takes)
                    slope[c] = (h - held[c]) / period;
                held[c] = std::clamp(held[c] + slope[c], -1.0, 1.0);
                output[c][i] = static_cast<float>(Step(held[c]) / drive);
            }
        }
        return output;
    }
    double Step(double y) const {
        if (std::abs(y) < std::exp2(-std::max(bits, 8.0)))
            return 0.0;
        const double cell = std::exp2(1.0 - bits);
        const double q = std::trunc(y / cell) * cell + (y <= 0.0 ? -0.5 : 0.5) * cell;
        return std::clamp(q, -1.0, 1.0);
    }
};

// Rounding may put a sample on the other side of a step or of the dead zone's edge, and may move
// the taking of a sample by one, which bends a whole ramp: few samples only.
TEST(BitCrusherTest, MatchesAPlainModelUnderRandomSettings) {
    Dice dice(3);
    for (uint32_t round = 0; round < 24; ++round) {
        const float bits = dice.Between(1.5f, 16.0f);
        const float divisor = round % 4 == 0 ? 1.0f : dice.Between(1.0f, 40.0f);
        const float driveDb = dice.Between(-20.0f, 20.0f);
        const bool stereo = round % 3 != 0;
        FullyWet rig(bits, divisor);
        rig.module.SetParameterValue(BitCrusher::InGainCompensated, driveDb);
        rig.module.SetParameterValue(BitCrusher::StereoBC, stereo ? 1.0f : 0.0f);

        const Stereo input{Noise(round, 9600, 0.5f), Sine(300.0, 48000.0, 9600, 0.9f)};
        const Stereo output = rig.Run(input, 5.0f);
        const double drive = std::pow(10.0, double{driveDb} / 20.0);
        const Stereo wanted = Model{bits, divisor, drive, stereo}.Run(input);
        uint32_t astray = 0;
        for (size_t c = 0; c < (stereo ? 2u : 1u); ++c)
            for (size_t i = 0; i < input[0].size(); ++i)
                astray += std::abs(output[c][i] - wanted[c][i]) > 1.0e-4f ? 1u : 0u;
        EXPECT_LT(astray, 100u) << bits << " bits, divisor " << divisor << ", " << driveDb << " dB";
        EXPECT_TRUE(stereo || output[1] == Channel(9600, 5.0f));  // left as it was
    }
}

TEST(BitCrusherTest, DryIsTheInputAndWetTheSameForEveryCutAndAfterAReset) {
    const Stereo input{Noise(9, 960), Noise(10, 960)};
    FullyWet dry(3.0f, 20.0f);
    dry.module.SetParameterValue(BitCrusher::Wet, 0.0f);
    dry.module.Reset(true);
    EXPECT_EQ(dry.Run(input), input);

    const Stereo once = FullyWet(6.0f, 7.0f, 960).Run(input);
    FullyWet rig(6.0f, 7.0f, 44);
    EXPECT_EQ(rig.Run(input), once);
    EXPECT_NE(rig.Run(input), once);
    rig.module.Reset(false);
    Stereo inPlace = input;
    rig.RunInPlace(inPlace);
    EXPECT_EQ(inPlace, once);
}

TEST(BitCrusherTest, RowsMoveDepthAndDivisor) {
    const Stereo input{Noise(13, 960), Noise(14, 960)};
    FullyWet modulated(16.0f, 1.0f);
    modulated.Modulate(3, 0.5f);  // Bitdepth falls with the position: 16 down to 8.75
    modulated.Modulate(4, 0.25f);
    const float divisor = modulated.module.ParameterAt(BitCrusher::Downsample).ValueOf(0.25f);
    FullyWet still(16.0f, divisor);
    still.Modulate(3, 0.5f);  // the dead zone stays that of the unmodulated depth
    const Stereo moved = modulated.Run(input);
    EXPECT_EQ(moved, still.Run(input));
    EXPECT_NE(moved, FullyWet(16.0f, divisor).Run(input));
}

}  // namespace
}  // namespace Quorvan::dsp
