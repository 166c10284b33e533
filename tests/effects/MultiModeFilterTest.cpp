#include "effects/MultiModeFilter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <numbers>
#include <random>
#include <vector>

#include "support/ModuleRig.h"
#include "support/RampedPole.h"
#include "support/TestSignals.h"

namespace Quorvan::dsp {
namespace {

using test::Channel;
using test::Stereo;
using Rig = test::ModuleRig<MultiModeFilter>;
using Filter = MultiModeFilter;

constexpr std::array<float, 3> kRates{44100.0f, 48000.0f, 96000.0f};

/// Blocks of about a millisecond, as the processor makes them.
uint32_t BlockOf(float rate) {
    return rate == 44100.0f ? 44 : static_cast<uint32_t>(rate / 1000.0f);
}

/// What the filter is told for one block, behind all curves and rows.
struct Told {
    double wet, frequency, q, qPosition;
    float combFrequency, unmovedCombFrequency;
    int mode, stages;
    bool clears;  ///< Mode or Slope has been written, if to no effect
};

double TableDecibels(const Told& told) {
    constexpr double points[6] = {0.5, 1.25, 2.5, 5.0, 10.0, 15.0};
    constexpr double rows[7][6] = {{0, -1, -2, -3, -5, -6},     {0, -1.5, -3, -11, -22, -28},
                                   {0, -3, -10, -22, -36, -48}, {6, 4, 2, -2, -6, -8},
                                   {12, 6, 0, -12, -22, -24},   {20, 10, -3, -18, -36, -48},
                                   {0, -1, -2, -4, -7, -14}};
    if (told.mode == 4)
        return 0.0;
    const double* row = rows[told.mode == 3 ? 6 : told.stages - 1 + (told.mode == 2 ? 3 : 0)];
    double sum = row[0];
    for (int k = 1; k < 6; ++k)
        sum += (row[k] - row[k - 1]) *
               std::clamp((told.q - points[k - 1]) / (points[k] - points[k - 1]), 0.0, 1.0);
    return sum;
}

/// The filter in double precision, one sample and one channel after the other.
class Model {
public:
    Model(float sampleRate, uint32_t blockFrames, const Told& start)
        : rate(static_cast<double>(sampleRate)), steps(blockFrames) {
        wet = {.rate = rate, .time = 0.01, .line = start.wet, .value = start.wet};
        const double gainNow = std::pow(10.0, TableDecibels(start) / 20.0);
        gain = {.rate = rate, .time = 0.01, .line = gainNow, .value = gainNow};
        frequency = start.frequency;
        coefficients = CoefficientsOf(start);
        delay.sampleRate = rate;
        delay.range = static_cast<double>(sampleRate / 20.0f - sampleRate / 2000.0f);
        delay.UpdateCoefficients();
        delay.Reset(sampleRate / start.combFrequency);
    }

    Stereo Run(const Stereo& input, const Told& told) {
        const float rateF = static_cast<float>(rate);
        if (told.clears) {
            state = {};
            history = {};
            if (told.mode >= 3)
                delay.Reset(rateF / told.unmovedCombFrequency);
        }
        const auto count = static_cast<uint32_t>(input[0].size());
        mix = wet.Run(told.wet, count, steps);
        return told.mode < 3 ? RunSections(input, told, count) : RunComb(input, told, count);
    }

private:
    using Coefficients = std::array<double, 4>;  // a1, a2, a3, band

    Coefficients CoefficientsOf(const Told& told) const {
        const double g = std::tan(std::numbers::pi * frequency / rate);
        const double a1 = 1.0 / (1.0 + g / told.q + g * g);
        const double band[3] = {0.0, -1.0 / told.q, 1.0};
        return {a1, g * a1, g * g * a1, band[told.mode]};
    }

    Stereo RunSections(const Stereo& input, const Told& told, uint32_t count) {
        frequency += (told.frequency - frequency) * (1.0 - std::exp(-5.0 * steps / (0.004 * rate)));
        const Coefficients from = coefficients;
        coefficients = CoefficientsOf(told);
        const std::vector<double> level =
            gain.Run(std::pow(10.0, TableDecibels(told) / 20.0), count, steps);
        const double direct = told.mode == 1 ? 1.0 : 0.0;
        const double low = told.mode == 0 ? 1.0 : told.mode == 1 ? -1.0 : 0.0;
        Stereo output = input;
        for (size_t c = 0; c < 2; ++c) {
            for (uint32_t i = 0; i < count; ++i) {
                Coefficients now;
                for (size_t k = 0; k < 4; ++k)
                    now[k] = from[k] + (coefficients[k] - from[k]) * (i + 1) / steps;
                double x = static_cast<double>(input[c][i]);
                for (int s = 0; s < told.stages; ++s) {
                    auto& [z1, z2] = state[c][static_cast<size_t>(s)];
                    const double bp = now[0] * z1 + now[1] * (x - z2);
                    const double lp = z2 + now[1] * z1 + now[2] * (x - z2);
                    z1 += 2.0 * (bp - z1);
                    z2 += 2.0 * (lp - z2);
                    x = direct * x + now[3] * bp + low * lp;
                }
                output[c][i] = Mixed(input[c][i], x * level[i], i);
            }
        }
        return output;
    }

    Stereo RunComb(const Stereo& input, const Told& told, uint32_t count) {
        delay.SetTarget(static_cast<float>(rate) / told.combFrequency);
        std::vector<size_t> behind;
        for (uint32_t i = 0; i < count; ++i)
            behind.push_back(static_cast<size_t>(delay.Tick()));
        const double f = told.qPosition * 0.99;
        std::vector<double> level(count, 1.0);
        if (told.mode == 3)
            level =
                gain.Run(((-1.560468 * f + 1.296221) * f - 0.5438554) * f + 1.00086, count, steps);
        Stereo output = input;
        for (size_t c = 0; c < 2; ++c) {
            std::vector<double>& past = history[c];
            for (uint32_t i = 0; i < count; ++i) {
                const double x = static_cast<double>(input[c][i]);
                const double echo = behind[i] <= past.size() ? past[past.size() - behind[i]] : 0.0;
                const double y = x + f * echo;
                past.push_back(told.mode == 3 ? y : x);
                output[c][i] = Mixed(input[c][i], y * level[i], i);
            }
        }
        return output;
    }

    float Mixed(float dry, double effect, uint32_t i) const {
        return static_cast<float>((1.0 - mix[i]) * static_cast<double>(dry) + mix[i] * effect);
    }

    double rate;
    uint32_t steps;
    test::RampedPole wet, gain;
    double frequency;
    Coefficients coefficients;
    SmootherSRL delay{0.03};
    std::vector<double> mix;
    std::array<std::array<std::pair<double, double>, 3>, 2> state{};
    std::array<std::vector<double>, 2> history;
};

/// Positions and rows of one block, drawn at random, given to the filter and told to the model.
class Settings {
public:
    explicit Settings(Rig& owner) : rig(owner) {}

    void Draw(std::mt19937& random) {
        std::uniform_real_distribution<float> unit(0.0f, 1.0f);
        clears = false;
        for (const uint32_t id : {Filter::Mode, Filter::Slope}) {
            if (unit(random) < 0.03f) {
                Set(id, unit(random));
                clears = true;
            }
        }
        for (const uint32_t id : {Filter::Wet, Filter::Freq, Filter::Q, Filter::CombFreq})
            if (unit(random) < 0.2f)
                Set(id, unit(random));
        for (uint32_t k = 0; k < rows.size(); ++k)
            if (unit(random) < 0.1f)
                rig.Modulate(2 + k, rows[k] = unit(random) < 0.5f ? 0.0f : unit(random) - 0.5f);
    }

    Told Now() {
        return {
            .wet = Double(Moved(Filter::Wet, 0)),
            .frequency = Double(Moved(Filter::Freq, 1)),
            .q = Double(Moved(Filter::Q, 2)),
            .qPosition = Double(std::clamp(rig.module.Position(Filter::Q) + rows[2], 0.0f, 1.0f)),
            .combFrequency = Moved(Filter::CombFreq, 1),
            .unmovedCombFrequency = rig.module.Value(Filter::CombFreq),
            .mode = rig.module.Index(Filter::Mode),
            .stages = rig.module.Index(Filter::Slope) / 12,
            .clears = clears};
    }

private:
    static double Double(float x) { return static_cast<double>(x); }
    void Set(uint32_t id, float position) { rig.module.SetParameterNormalized(id, position); }
    float Moved(uint32_t id, size_t row) {
        const Parameter& parameter = rig.module.ParameterAt(id);
        return parameter.ValueOf(std::clamp(rig.module.Position(id) + rows[row], 0.0f, 1.0f));
    }

    Rig& rig;
    std::array<float, 3> rows{};
    bool clears = false;
};

/// Noise, clicks in silence and a sine, by turns of half a second of blocks.
Stereo SignalOfBlock(uint32_t number, uint32_t length, float rate) {
    const uint32_t kind = number / 250 % 3;
    if (kind == 0)
        return {test::Noise(number, length, 0.8f), test::Noise(number + 100000, length, 0.8f)};
    if (kind == 1) {
        Stereo clicks{Channel(length), Channel(length)};
        clicks[number % 2][number % length] = number % 10 == 0 ? 1.0f : 0.0f;
        return clicks;
    }
    return {test::Sine(997.0, static_cast<double>(rate), length, 0.7f), Channel(length, 0.3f)};
}

// In single precision the states of steep settings with a low corner lose parts in 1e4 of the
// loudest sample around.
TEST(MultiModeFilterTest, MatchesAPlainModelWhileEverythingMoves) {
    for (const float rate : kRates) {
        const uint32_t block = BlockOf(rate);
        Rig rig(rate, block, "");
        Settings settings(rig);
        Model model(rate, block, settings.Now());
        std::mt19937 random(static_cast<uint32_t>(rate));
        std::array<uint32_t, 5> seen{};
        std::array<float, 2> worst{};  // of the sections, of the combs
        float peak = 1.0f;
        for (uint32_t number = 0; number < 1500; ++number) {
            settings.Draw(random);
            const uint32_t length = number % 7 == 3 ? block - 12 : block;
            const Stereo input = SignalOfBlock(number, length, rate);
            const Stereo output = rig.Run(input, 9.0f);
            const Told told = settings.Now();
            const Stereo wanted = model.Run(input, told);
            ++seen[static_cast<size_t>(told.mode)];
            peak = std::max(peak * 0.97f, 1.0f);
            for (size_t c = 0; c < 2; ++c) {
                for (uint32_t i = 0; i < length; ++i) {
                    peak = std::max(peak, std::abs(wanted[c][i]));
                    float& mark = worst[told.mode >= 3];
                    mark = std::max(mark, std::abs(output[c][i] - wanted[c][i]) / peak);
                }
            }
        }
        EXPECT_LT(worst[0], 4.0e-4f) << rate;
        EXPECT_LT(worst[1], 1.0e-5f) << rate;
        for (const uint32_t blocks : seen)
            EXPECT_GT(blocks, 50u) << "a mode was hardly tried at " << rate;
    }
}

/// Fully wet and at rest.
struct Still : Rig {
    Still(float rate, int32_t mode, float slope, float frequency, float q)
        : Rig(rate, BlockOf(rate), "") {
        module.SetParameterValue(Filter::Wet, 1.0f);
        module.SetParameterValue(Filter::Mode, static_cast<float>(mode));
        module.SetParameterValue(Filter::Slope, slope);
        module.SetParameterValue(Filter::Freq, frequency);
        module.SetParameterValue(Filter::Q, q);
        module.Reset(true);
    }
    /// Gain and phase at a multiple of 10 Hz, once the start has died away.
    std::complex<double> Response(double hertz, double rate) {
        const auto window = static_cast<size_t>(rate) / 10;
        const auto start = window * 2;
        const Channel tone = test::Sine(hertz, rate, start + window, 0.1f);
        const Stereo output = Run({tone, tone});
        std::complex<double> in, out;
        for (size_t i = start; i < start + window; ++i) {
            const auto turn =
                std::polar(1.0, -2.0 * std::numbers::pi * hertz / rate * static_cast<double>(i));
            in += turn * static_cast<double>(tone[i]);
            out += turn * static_cast<double>(output[1][i]);
        }
        return out / in;
    }
};

TEST(MultiModeFilterTest, RespondsAsTheAnalogueSectionWithItsLevelEvenedOut) {
    struct Case {
        float q;
        double decibels[2][3];  // low- and high-pass, band-pass; one to three sections
    };
    const Case cases[] = {{0.5f, {{0, 0, 0}, {6, 12, 20}}},
                          {3.75f, {{-2.5, -7, -16}, {0, -6, -10.5}}},
                          {15.0f, {{-6, -28, -48}, {-8, -24, -48}}}};
    for (const float rateF : kRates) {
        const auto rate = static_cast<double>(rateF);
        constexpr double corner = 1000.0;
        for (const Case& c : cases) {
            for (int mode = 0; mode < 3; ++mode) {
                for (int n = 1; n <= 3; ++n) {
                    Still filter(rateF, mode, 12.0f * static_cast<float>(n), 1000.0f, c.q);
                    for (const double hertz : {250.0, 1000.0, 9000.0}) {
                        const std::complex<double> s(
                            0.0, std::tan(std::numbers::pi * hertz / rate) /
                                     std::tan(std::numbers::pi * corner / rate));
                        const std::complex<double> top[3] = {1.0, s * s, s};
                        const auto section =
                            top[mode] / (s * s + s / static_cast<double>(c.q) + 1.0);
                        const double level = std::pow(10.0, c.decibels[mode == 2][n - 1] / 20.0);
                        const auto wanted = level * std::pow(section, n);
                        const auto got = filter.Response(hertz, rate);
                        EXPECT_LT(std::abs(got - wanted), 0.002 * std::abs(wanted) + 1.0e-6)
                            << "mode " << mode << ", " << n << " sections, Q " << c.q << ", "
                            << hertz << " Hz at " << rate;
                    }
                }
            }
        }
    }
}

TEST(MultiModeFilterTest, RecursiveCombRingsAtOnePeriodAndFeedForwardEchoesOnce) {
    for (const float rate : kRates) {
        for (const int32_t mode : {Filter::kCombFeedback, Filter::kCombFeedForward}) {
            Still comb(rate, mode, 12.0f, 1000.0f, 15.0f);
            comb.module.SetParameterValue(Filter::CombFreq, 20.0f);  // the longest ring
            comb.module.Reset(true);
            Channel click(36000);
            comb.Run({click, click});  // the gain settles at full feedback
            const auto period = static_cast<size_t>(rate / 20.0f);
            click[3] = 1.0f;
            const Channel output = comb.Run({click, click})[0];
            const bool rings = mode == Filter::kCombFeedback;
            const float first =
                rings ? 1.00086f - 0.5438554f * 0.99f + 1.296221f * 0.9801f - 1.560468f * 0.970299f
                      : 1.0f;
            double beside = 0.0;
            for (size_t i = 0; i < output.size(); ++i)
                if (i < 3 || (i - 3) % period != 0)
                    beside += static_cast<double>(std::abs(output[i]));
            EXPECT_EQ(beside, 0.0);
            EXPECT_NEAR(output[3], first, 1.0e-5f);
            EXPECT_NEAR(output[3 + period], first * 0.99f, 1.0e-5f);
            EXPECT_NEAR(output[3 + 3 * period], rings ? first * 0.970299f : 0.0f, 1.0e-5f);
        }
    }
}

TEST(MultiModeFilterTest, FeedForwardCombHasPeaksAtItsFrequencyAndNotchesBetween) {
    Still comb(48000.0f, Filter::kCombFeedForward, 12.0f, 1000.0f, 15.0f);
    comb.module.SetParameterValue(Filter::CombFreq, 500.0f);
    comb.module.Reset(true);
    EXPECT_NEAR(std::abs(comb.Response(500.0, 48000.0)), 1.99, 1.0e-4);
    EXPECT_NEAR(std::abs(comb.Response(1500.0, 48000.0)), 1.99, 1.0e-4);
    EXPECT_NEAR(std::abs(comb.Response(250.0, 48000.0)), 0.01, 1.0e-4);
}

TEST(MultiModeFilterTest, LowestQLeavesTheCombsWithoutEffect) {
    const Stereo input{test::Noise(1, 4800), test::Noise(2, 4800)};
    Still feedForward(48000.0f, Filter::kCombFeedForward, 12.0f, 1000.0f, 0.5f);
    EXPECT_EQ(feedForward.Run(input), input);
    Still recursive(48000.0f, Filter::kCombFeedback, 12.0f, 1000.0f, 0.5f);
    const Stereo output = recursive.Run(input);
    for (size_t i = 2400; i < 4800; ++i)  // behind the glide of the gain
        EXPECT_NEAR(output[0][i], input[0][i] * 1.00086f, 1.0e-5f);
}

TEST(MultiModeFilterTest, DryIsTheInputInEveryMode) {
    const Stereo input{test::Noise(3, 960), test::Noise(4, 960)};
    for (int32_t mode = 0; mode < 5; ++mode) {
        Still filter(48000.0f, mode, 36.0f, 500.0f, 8.0f);
        filter.module.SetParameterValue(Filter::Wet, 0.0f);
        filter.module.Reset(true);
        EXPECT_EQ(filter.Run(input), input) << mode;
    }
}

TEST(MultiModeFilterTest, CornersBeyondHalfTheRateAreHeldBelowIt) {
    constexpr float rate = 11025.0f;
    const Stereo input{test::Noise(9, 11025, 0.5f), test::Noise(10, 11025, 0.5f)};
    for (int32_t mode = 0; mode < 3; ++mode) {
        Still filter(rate, mode, 36.0f, 20000.0f, 0.7f),
            held(rate, mode, 36.0f, 0.49f * rate, 0.7f);
        const Stereo output = filter.Run(input), wanted = held.Run(input);
        for (size_t i = 0; i < input[0].size(); ++i) {
            ASSERT_LT(std::abs(output[0][i]), 4.0f) << mode << " " << i;
            ASSERT_NEAR(output[0][i], wanted[0][i], 1.0e-3f) << mode << " " << i;
        }
    }
}

TEST(MultiModeFilterTest, RunsInPlace) {
    const Stereo input{test::Noise(5, 960), test::Noise(6, 960)};
    for (int32_t mode = 0; mode < 5; ++mode) {
        Still apart(44100.0f, mode, 24.0f, 2000.0f, 4.0f),
            inPlace(44100.0f, mode, 24.0f, 2000.0f, 4.0f);
        Stereo signal = input;
        inPlace.RunInPlace(signal);
        EXPECT_EQ(signal, apart.Run(input)) << mode;
    }
}

TEST(MultiModeFilterTest, ChangeOfModeOrSlopeClearsWhatRings) {
    const Stereo noise{test::Noise(7, 4800), test::Noise(8, 4800)};
    const Stereo silence{Channel(4800), Channel(4800)};
    const auto ringsOn = [&](uint32_t id, float position, int32_t mode) {
        Still filter(48000.0f, mode, 12.0f, 300.0f, 15.0f);
        filter.Run(noise);
        filter.module.SetParameterNormalized(id, position);
        return filter.Run(silence) != silence;
    };
    for (const int32_t mode : {0, 2, 3}) {
        EXPECT_FALSE(ringsOn(Filter::Mode, 0.3f, mode));
        EXPECT_FALSE(ringsOn(Filter::Slope, 1.0f, mode));
        EXPECT_TRUE(ringsOn(Filter::Freq, 0.6f, mode));
    }
    Still reset(48000.0f, Filter::kCombFeedback, 12.0f, 300.0f, 15.0f);
    reset.Run(noise);
    reset.module.Reset(false);
    EXPECT_EQ(reset.Run(silence), silence);
}

}  // namespace
}  // namespace Quorvan::dsp
