#include "modulation/EnvFollower.h"

#include "support/ModuleRig.h"
#include "support/Test.h"

namespace Quorvan::dsp {
namespace {

constexpr float kRate = 48000.0f;

struct Settings {
    float attack = 0.005f, release = 0.01f, windowMs = 10.0f, gain = 1.4142135f;
    bool stereo = false;
};

struct Rig : ModuleRig<EnvFollower> {
    explicit Rig(const Settings& s = {}, float rate = kRate, uint32_t block = 48)
        : ModuleRig<EnvFollower>(rate, block, "EnvFollower") {
        // As the owner shapes it: times down to 0.
        module.Configure(EnvFollower::Attack, PotardKind::kLinear, 0.0f, 5.0f);
        module.Configure(EnvFollower::Release, PotardKind::kLinear, 0.0f, 5.0f);
        module.SetParameterValue(EnvFollower::Attack, s.attack);
        module.SetParameterValue(EnvFollower::Release, s.release);
        module.SetParameterValue(EnvFollower::RMSWindowDurationMs, s.windowMs);
        module.SetParameterValue(EnvFollower::FixedLinearGain, s.gain);
        module.SetParameterNormalized(EnvFollower::StereoInput, s.stereo ? 1.0f : 0.0f);
    }
    Channel Follow(const Stereo& input) { return Run(input)[0]; }
};

/// The same with every window summed anew, in double precision.
std::vector<double> Plain(const Settings& s, const Stereo& input, double rate) {
    const auto step = [rate](double seconds) { return 1.0 - std::exp(-5.0 / (seconds * rate)); };
    const auto window = static_cast<size_t>(s.windowMs * static_cast<float>(rate) * 0.001f);
    std::vector<double> levels(input[0].size()), envelope(input[0].size());
    double state = 0.0;
    for (size_t i = 0; i < levels.size(); ++i) {
        const double left = std::abs(input[0][i]), right = std::abs(input[1][i]);
        double level = levels[i] = s.stereo ? 0.5 * (left + right) : left;
        if (window > 1) {
            double sum = 0.0;
            for (size_t k = 0; k < std::min(window, i + 1); ++k)
                sum += levels[i - k] * levels[i - k];
            level = std::sqrt(sum / static_cast<double>(window));
        }
        level *= s.gain;
        state += (level - state) * step(level < state ? s.release : s.attack);
        envelope[i] = state;
    }
    return envelope;
}

TEST(EnvFollowerTest, MatchesAPlainModelUnderRandomSettings) {
    Dice dice(8);
    for (uint32_t round = 0; round < 20; ++round) {
        const Settings s{round % 5 == 0 ? 0.0f : dice.Between(0.001f, 0.1f),
                         dice.Between(0.001f, 0.3f),
                         round % 2 == 0 ? dice.Between(0.0f, 0.04f) : dice.Between(0.05f, 12.0f),
                         dice.Between(0.1f, 4.0f), round % 3 == 0};
        const float rate = round % 4 < 2 ? 44100.0f : 96000.0f;
        const Stereo input{Bursts(round, 4800, 0.8f), Bursts(round + 50, 4800, 0.8f)};
        const Channel found = Rig(s, rate, round % 2 == 0 ? 44 : 4800).Follow(input);
        const std::vector<double> wanted = Plain(s, input, rate);
        // Entries too small for the running sum are lost: 1e-10 a sample of the window.
        const double samples = std::max(s.windowMs * rate * 0.001, 1.0);
        const double floor = 2.0e-6 + s.gain * 1.0e-5 * std::sqrt(samples);
        for (size_t i = 0; i < found.size(); ++i)
            ASSERT_NEAR(found[i], wanted[i], floor + 1.0e-5 * wanted[i])
                << "round " << round << " at " << i;
    }
}

// The running sum must not drift, however long it has run.
TEST(EnvFollowerTest, SilenceComesToRestAtZero) {
    for (const float windowMs : {0.0f, 100.0f}) {
        Rig rig({.windowMs = windowMs});
        rig.Follow({Bursts(2, 480000, 20.0f), Channel(480000)});
        const Channel tail = rig.Follow({Channel(9600), Channel(9600)});
        EXPECT_GT(tail.front(), 0.0f);
        EXPECT_EQ(tail.back(), 0.0f) << windowMs;
    }
}

TEST(EnvFollowerTest, ANewWindowStartsOver) {
    Rig rig({.windowMs = 10.0f});
    const Stereo loud{Noise(4, 4800), Channel(4800)};
    rig.Follow(loud);
    rig.module.SetParameterValue(EnvFollower::RMSWindowDurationMs, 20.0f);
    EXPECT_EQ(rig.Follow(loud), Rig({.windowMs = 20.0f}).Follow(loud));
    rig.Follow(loud);
    rig.module.SetParameterValue(EnvFollower::RMSWindowDurationMs, 0.0f);
    EXPECT_EQ(rig.Follow({Channel(48), Channel(48)}), Channel(48));
}

}  // namespace
}  // namespace Quorvan::dsp
