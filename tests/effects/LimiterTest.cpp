#include "effects/Limiter.h"

#include "effects/DigitalPPM.h"
#include "support/SideBySide.h"

namespace Quorvan::dsp {
namespace {

const float kCeiling = std::pow(10.0f, -0.1f / 20.0f);

struct Rig : ModuleRig<Limiter> {
    explicit Rig(float rate = 48000.0f) : ModuleRig<Limiter>(rate, BlockOf(rate), "Limiter") {}
};

/// Signals that look for a way past the limiter, all up to peak.
std::vector<Channel> Attempts(float rate, size_t length, float peak) {
    Channel steps(length), impulses(length), swell = Sine(100.0, rate, length, peak);
    const Channel heights = Noise(5, length, peak);
    for (size_t i = 0; i < length; ++i) {
        steps[i] = std::array{0.1f, peak, -0.7f * peak}[i / 997 % 3];
        swell[i] *= static_cast<float>(i) / static_cast<float>(length);
    }
    for (size_t i = 0; i < length; i += 7 + i % 411)
        impulses[i] = heights[i];
    std::vector<Channel> all{Noise(1, length, peak), Bursts(3, length, peak), steps, impulses,
                             swell};
    for (const double hertz : {30.0, 5000.0, 0.2499 * static_cast<double>(rate)})
        all.push_back(Sine(hertz, rate, length, peak));
    return all;
}

// The gain that a sample asks for is the one it leaves with, or a lower one: what is over the
// ceiling comes from the rounding of logarithm and exponential, more of it the more decibels there
// are.
TEST(LimiterTest, NothingPassesTheCeiling) {
    for (const float rate : kRates)
        for (const float peak : {0.99f, 1.5f, 4.0f, 1000.0f}) {
            const float rounding = peak < 10.0f ? 2.0e-7f : 2.0e-6f;
            const size_t length = size_t{200} * BlockOf(rate);
            for (const Channel& signal : Attempts(rate, length, peak)) {
                Rig rig(rate);
                const Stereo output = rig.Run({signal, Noise(9, length, 0.3f * peak)});
                EXPECT_LE(PeakOf(output), kCeiling * (1.0f + rounding)) << peak;
                EXPECT_GT(PeakOf(output), 0.9f * std::min(kCeiling, PeakLevel(signal))) << peak;
            }
        }
}

TEST(LimiterTest, WhatIsBelowTheCeilingComesOutThreeMillisecondsLater) {
    for (const auto& [rate, latency] :
         {std::pair(44100.0f, 132u), {48000.0f, 144u}, {96000.0f, 288u}, {192000.0f, 576u}}) {
        Rig rig(rate);
        const size_t length = size_t{100} * BlockOf(rate);
        const Stereo input{Noise(1, length, 0.98f), Noise(2, length, 0.98f)};
        const Stereo output = rig.Run(input);
        EXPECT_EQ(rig.module.LookaheadSamples(), static_cast<int32_t>(latency));
        for (size_t c = 0; c < 2; ++c)
            for (size_t i = 0; i < length; ++i)
                ASSERT_EQ(output[c][i], i < latency ? 0.0f : input[c][i - latency]) << rate;
        EXPECT_EQ(rig.module.Position(Limiter::OutGainReduction), 0.0f);
    }
}

TEST(LimiterTest, BothChannelsAndTheMeterFollowTheLouder) {
    Rig rig;
    EXPECT_EQ(rig.module.Value(Limiter::LevelMeasureReMs), 50.0f);
    EXPECT_EQ(rig.module.Value(Limiter::Release), 300.0f);
    const Stereo output = rig.Run({Channel(9600, 4.0f), Channel(9600, -0.1f)});
    EXPECT_NEAR(output[0].back(), kCeiling, 1.0e-6f);
    EXPECT_NEAR(output[1].back(), -0.1f * kCeiling / 4.0f, 1.0e-6f);
    const float over = DecibelsOf(4.0f / kCeiling);
    EXPECT_NEAR(rig.module.Value(Limiter::OutGainReduction),
                ((over * 3.465e-06f - 0.000511f) * over + 0.03486f) * over, 1.0e-5f);
}

struct Meter : ModuleRig<DigitalPPM> {
    explicit Meter(float rate = 48000.0f, uint32_t block = 48)
        : ModuleRig<DigitalPPM>(rate, block, "MasterVuL") {}
    float After(const Channel& signal) {
        RunMono(signal);
        return module.GetParameterNormalized(DigitalPPM::Level);
    }
};

// While falling, the meter is a one-pole low-pass of the rectified signal.
TEST(DigitalPPMTest, MatchesAPlainModel) {
    const Channel signal = Bursts(3, 96000, 1.3f);
    double level = 0.0;
    Meter rig(44100.0f, 44);
    for (size_t at = 0; at + 440 <= signal.size(); at += 440) {
        for (size_t i = at; i < at + 440; ++i) {
            const double a = std::abs(signal[i]);
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
    Meter rig;
    EXPECT_EQ(rig.After(Channel(48, 0.5f)), 0.5f);
    ProcessBlock empty;
    EXPECT_TRUE(rig.module.Process(empty));
    EXPECT_EQ(rig.module.GetParameterNormalized(DigitalPPM::Level), 0.0f);
    EXPECT_NEAR(rig.After(Channel(48)), 0.5f, 0.001f);
}

}  // namespace
}  // namespace Quorvan::dsp
