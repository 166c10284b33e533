#include "effects/Delay.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <numbers>
#include <random>

#include "primitives/Biquad.h"
#include "support/ChangingSignal.h"
#include "support/EchoMeters.h"
#include "support/ModuleRig.h"
#include "support/PlainDelay.h"
#include "support/TestSignals.h"

namespace Quorvan::dsp {
namespace {

using test::Channel;
using test::Impulse;
using test::PeakOf;
using test::Stereo;
using D = Delay;

constexpr std::array<float, 3> kRates{44100.0f, 48000.0f, 96000.0f};

struct Rig : test::ModuleRig<D> {
    explicit Rig(float sampleRate)
        : ModuleRig(sampleRate, test::BlockOf(sampleRate), "Delay"), rate(sampleRate) {}
    void Set(uint32_t id, float value) { module.SetParameterValue(id, value); }
    /// Only the echo, filters as wide as they go.
    void Open(float delayMs) {
        Set(D::DelayTimeMs, delayMs);
        Set(D::Wet, 1.0f);
        Set(D::HPFreq, 20.0f);
        Set(D::LPFreq, 20000.0f);
    }
    /// Tells the module its switches, waits for the glides, and silences it.
    void Rest() {
        const auto seconds = static_cast<size_t>(rate) * 2;
        Run({Channel(seconds), Channel(seconds)});
        module.Reset(false);
    }
    /// What the loop's filters make of a signal.
    Channel Filtered(const Channel& signal) const {
        Channel filtered = signal;
        for (const bool high : {true, false}) {
            const float w = 6.2831855f * (high ? 20.0f : 20000.0f) / rate;
            BiquadState state;
            for (float& x : filtered)
                x = state.Tick(high ? BiquadCoefficients::HighPass(w, std::sin(w) * 0.70710355f)
                                    : BiquadCoefficients::LowPass(w, std::sin(w) * 0.70710355f),
                               x);
        }
        return filtered;
    }

    float rate;
};

size_t LoudestAt(const Channel& signal) {
    const auto loudest = std::max_element(
        signal.begin(), signal.end(), [](float a, float b) { return std::abs(a) < std::abs(b); });
    return static_cast<size_t>(loudest - signal.begin());
}

constexpr uint32_t kHighPassRow = 5;

/// Delays short enough to be heard in the run, and high-passes from 200 Hz on, as lower ones make
/// much of the last digit.
float PositionFor(uint32_t id, float draw) {
    return id == D::DelayTimeMs ? 0.7f * draw : id == D::HPFreq ? 0.35f + 0.65f * draw : draw;
}

TEST(DelayTest, MatchesAPlainModelWhileEverythingMoves) {
    for (const float rate : kRates) {
        const uint32_t block = test::BlockOf(rate);
        Rig rig(rate);
        test::PlainDelay model(rig.module, rate, block);
        test::PlainDelay::Rows rows;
        std::mt19937 random(static_cast<uint32_t>(rate));
        std::uniform_real_distribution<float> unit(0.0f, 1.0f);
        rig.module.SetParameterNormalized(D::HPFreq, 0.35f);
        float worst = 0.0f, peak = 1.0f;
        for (uint32_t number = 0; number < 4000; ++number) {
            // Then still, until the delay has come to rest and is read at whole samples.
            const bool jumps = number % 2000 < 400;
            for (uint32_t id = 0; jumps && id < D::kParameterCount; ++id) {
                const bool isSwitch = id >= D::StereoMode && id <= D::RateSyncedType;
                if (unit(random) < (isSwitch ? 0.01f : 0.03f))
                    rig.module.SetParameterNormalized(id, PositionFor(id, unit(random)));
            }
            for (uint32_t channel = 2; jumps && number > 300 && channel < 10; ++channel) {
                const bool movesDelay = channel == 3 || channel >= 7;
                const float least = channel == kHighPassRow ? 0.0f : -0.5f;
                if (unit(random) < 0.01f && (number > 2000 || !movesDelay))
                    rig.Modulate(channel, *(rows[channel] = least + (0.5f - least) * unit(random)));
            }
            if (number % 2000 == 100 || number % 2000 == 450) {
                rig.module.Reset(number % 2000 == 100);
                model.Reset();
            }
            if (jumps)
                rig.tempo = number / 100 % 2 == 0 ? 137.0f : 900.0f;
            const uint32_t length = number % 7 == 3 ? block - 12 : block;
            const bool hasRight = number % 50 > 5;
            const Stereo input = test::SignalOfBlock(number, length, rate);
            const Stereo output = hasRight ? rig.Run(input, 9.0f) : rig.RunMono(input[0], 9.0f);
            const Stereo wanted = model.Run(input, hasRight, rows, rig.tempo);
            peak = std::max({peak * 0.97f, PeakOf(wanted), 1.0f});
            for (size_t c = 0; c < 2; ++c)
                for (uint32_t i = 0; i < length; ++i)
                    worst = std::max(worst, std::abs(output[c][i] - wanted[c][i]) / peak);
        }
        EXPECT_LT(worst, 5.0e-5f) << rate;
        EXPECT_GT(model.restingBlocks, 100u) << rate;
    }
}

TEST(DelayTest, RestingEchoIsTheFilteredInputWholeSamplesLater) {
    for (const float rate : kRates) {
        for (const auto& [ms, fine] : {std::pair(2.0f, 0.0f), {17.777f, 0.0f}, {100.0f, -33.3f}}) {
            Rig rig(rate);
            rig.Open(ms);
            rig.Set(D::DelayFineMs, fine);
            rig.Set(D::StereoWidth, 0.13f);
            rig.Rest();
            // The fine part glides in anew behind a reset, from the middle.
            const size_t glide = static_cast<size_t>(rate) * 2;
            Channel noise = test::Noise(1, glide + 9600);
            const Stereo output = rig.Run({noise, noise});
            const Channel filtered = rig.Filtered(noise);
            const auto samples = static_cast<double>((ms + fine) * (rate * 0.001f));
            for (const auto& [c, delay] : {std::pair(size_t{0}, samples), {1, samples * 1.13}})
                for (size_t i = glide; i < noise.size(); ++i)
                    ASSERT_NEAR(output[c][i], filtered[i - static_cast<size_t>(delay + 1.0e-3)],
                                3.0e-3f)
                        << ms << ", channel " << c << " at " << rate;
        }
    }
}

/// Whether a delay of 17.777 ms comes out at whole samples.
bool ReadsWholeSamples(Rig& rig) {
    const Channel noise = test::Noise(1, 4800);
    const Channel output = rig.Run({noise, noise})[0];
    const Channel filtered = rig.Filtered(noise);
    const auto delay = static_cast<size_t>(17.777f * (rig.rate * 0.001f));
    for (size_t i = delay; i < noise.size(); ++i)
        if (std::abs(output[i] - filtered[i - delay]) > 3.0e-3f)
            return false;
    return true;
}

TEST(DelayTest, ReadsWholeSamplesUnlessWhatIsInForceMovesTheDelay) {
    for (const float mode : {0.0f, 1.0f}) {
        for (uint32_t channel = 1; channel < 10; ++channel) {
            Rig rig(48000.0f);
            rig.Open(17.777f);
            rig.Set(D::StereoMode, mode);
            rig.Set(D::StereoWidthPP, 1.0f);
            if (channel > 1)
                rig.Modulate(channel, 0.0f);
            rig.Rest();
            const bool moves = channel == 3 || channel == 9 || (channel == 7 && mode == 0.0f);
            EXPECT_EQ(ReadsWholeSamples(rig), !moves) << "channel " << channel << ", mode " << mode;
        }
    }
    // A glide of the width counts, also once the mode has put it out of force.
    Rig rig(48000.0f);
    rig.Open(17.777f);
    rig.Rest();
    rig.Set(D::StereoWidth, 0.2f);
    EXPECT_FALSE(ReadsWholeSamples(rig));
    rig.Set(D::StereoMode, 1.0f);
    rig.Set(D::StereoWidthPP, 1.0f);
    rig.Run({Channel(96000), Channel(96000)});
    EXPECT_FALSE(ReadsWholeSamples(rig));
    rig.module.Reset(false);
    EXPECT_TRUE(ReadsWholeSamples(rig));
}

TEST(DelayTest, NotesLastAsTheTempoSaysAndStepDownToFourSeconds) {
    struct Case {
        float tempo, note, type;
        double seconds;
    };
    for (const Case& c : {Case{120.0f, 0.0f, 0.0f, 0.0625},
                          {120.0f, 3.0f, 0.0f, 0.5},
                          {120.0f, 3.0f, 1.0f, 1.0 / 3.0},
                          {90.0f, 2.0f, 2.0f, 0.5},
                          {120.0f, 8.0f, 0.0f, 4.0},
                          {30.0f, 7.0f, 0.0f, 4.0},
                          {30.0f, 7.0f, 2.0f, 3.0},
                          {100000.0f, 0.0f, 0.0f, 0.0001},
                          {0.0f, 0.0f, 0.0f, 4.0}}) {
        for (const float rate : {44100.0f, 48000.0f}) {
            Rig rig(rate);
            rig.tempo = c.tempo;
            rig.Open(2.0f);
            rig.Set(D::MidiSync, 1.0f);
            rig.Set(D::DelayTimeSynced, c.note);
            rig.Set(D::RateSyncedType, c.type);
            rig.Rest();
            rig.Rest();  // the first one told the module its tempo
            const auto length = static_cast<size_t>(rate * 4.2f) / 4 * 4;
            const auto late = static_cast<double>(LoudestAt(rig.Run(Impulse(length))[0]));
            EXPECT_NEAR(late, c.seconds * static_cast<double>(rate), 1.5)
                << c.tempo << ", " << c.note << ", " << c.type;
        }
    }
}

TEST(DelayTest, RightLineHoldsTheLongestDelayAndAFifth) {
    Rig rig(48000.0f);
    rig.Open(2.0f);
    rig.tempo = 120.0f;
    rig.Set(D::MidiSync, 1.0f);
    rig.Set(D::DelayTimeSynced, 8.0f);
    rig.Set(D::DelayFineMs, 50.0f);
    rig.Set(D::StereoWidth, 0.2f);
    rig.Rest();
    rig.Rest();
    const Stereo output = rig.Run(Impulse(240000));
    EXPECT_NEAR(static_cast<double>(LoudestAt(output[0])), 192000.0, 1.5);
    EXPECT_NEAR(static_cast<double>(LoudestAt(output[1])), 230400.0, 1.5);
}

/// Amplitude of a tone in a stretch.
double LevelOf(const Channel& signal, size_t begin, size_t end, double hertz, double rate) {
    std::complex<double> sum;
    for (size_t i = begin; i < end; ++i)
        sum += static_cast<double>(signal[i]) *
               std::polar(1.0, -2.0 * std::numbers::pi * hertz / rate * static_cast<double>(i));
    return 2.0 * std::abs(sum) / static_cast<double>(end - begin);
}

// Bursts of 2 kHz, which the filters leave alone.
TEST(DelayTest, PingPongHalvesEveryOtherEchoAndWidthMixesThem) {
    for (const float rateF : kRates) {
        const auto rate = static_cast<double>(rateF);
        const auto step = static_cast<size_t>(rate * 0.1);
        for (const float width : {1.0f, 0.0f}) {
            Rig rig(rateF);
            rig.Open(100.0f);
            rig.Set(D::StereoMode, 1.0f);
            rig.Set(D::StereoWidthPP, width);
            rig.Set(D::Feedback, 0.5f);
            rig.Rest();
            Channel burst = test::Sine(2000.0, rate, 8 * step);
            std::fill(burst.begin() + static_cast<std::ptrdiff_t>(step / 2), burst.end(), 0.0f);
            const Stereo output = rig.Run({burst, burst});
            for (size_t k = 0; k < 6; ++k) {
                const double echo = k == 0 ? 0.0 : std::pow(0.5, static_cast<double>((k - 1) / 2));
                const size_t home = (k + 1) % 2;
                for (size_t c = 0; c < 2; ++c) {
                    const double wanted = width == 0.0f ? 0.5 * echo : c == home ? echo : 0.0;
                    EXPECT_NEAR(LevelOf(output[c], k * step + step / 10, k * step + step * 2 / 5,
                                        2000.0, rate),
                                wanted, 1.0e-3)
                        << "echo " << k << ", channel " << c << ", width " << width;
                }
            }
        }
    }
}

TEST(DelayTest, MixIsFullDryBelowTheMiddleAndFullWetAboveIt) {
    const Stereo noise{test::Noise(1, 9600), test::Noise(2, 9600)};
    const auto heard = [&noise](float wet) {
        Rig rig(48000.0f);
        rig.Open(20.0f);
        rig.Set(D::Wet, wet);
        rig.module.Reset(true);
        rig.Run({Channel(48), Channel(48)});
        rig.module.Reset(false);
        return rig.Run(noise);
    };
    EXPECT_EQ(heard(0.0f), noise);
    const Stereo echo = heard(1.0f), both = heard(0.5f), low = heard(0.25f), high = heard(0.75f);
    for (size_t c = 0; c < 2; ++c) {
        for (size_t i = 0; i < 9600; ++i) {
            ASSERT_FLOAT_EQ(both[c][i], noise[c][i] + echo[c][i]);
            ASSERT_FLOAT_EQ(low[c][i], noise[c][i] + 0.5f * echo[c][i]);
            ASSERT_FLOAT_EQ(high[c][i], 0.5f * noise[c][i] + echo[c][i]);
        }
    }
}

// Phase of a tone behind the filters, whose own part is taken off.
TEST(DelayTest, MovedDelayIsReadBetweenTheSamples) {
    struct Case {
        float rowOfTime, rowOfVibrato;
        double extraMs;
    };
    for (const float rateF : kRates) {
        const auto rate = static_cast<double>(rateF);
        for (const Case& c :
             {Case{1.0e-9f, 0.0f, 0.0}, {0.0f, 0.123f, 6.15}, {0.0f, -0.1f, -5.0}}) {
            Rig rig(rateF);
            rig.Open(10.3f);
            rig.Set(D::VibratoMaxAmount, 50.0f);
            if (c.rowOfTime != 0.0f)
                rig.Modulate(3, c.rowOfTime);
            else
                rig.Modulate(9, c.rowOfVibrato);
            rig.Rest();
            const size_t start = static_cast<size_t>(rate) * 2;
            const Channel tone = test::Sine(500.0, rate, start + static_cast<size_t>(rate) / 10);
            const Channel output = rig.Run({tone, tone})[0];
            const Channel filtered = rig.Filtered(tone);
            std::complex<double> got, wanted;
            for (size_t i = start; i < tone.size(); ++i) {
                const auto turn = std::polar(
                    1.0, -2.0 * std::numbers::pi * 500.0 / rate * static_cast<double>(i));
                got += turn * static_cast<double>(output[i]);
                wanted += turn * static_cast<double>(filtered[i]);
            }
            const double ms = -std::arg(got / wanted) / (2.0 * std::numbers::pi * 0.5);
            const double cycles = std::round((10.3 + c.extraMs - ms) / 2.0);
            EXPECT_NEAR(ms + 2.0 * cycles, 10.3 + c.extraMs, 1.0e-4) << rate;
        }
    }
}

TEST(DelayTest, RunsInPlace) {
    for (const float mode : {0.0f, 1.0f}) {
        Rig apart(44100.0f), inPlace(44100.0f);
        for (Rig* one : {&apart, &inPlace}) {
            one->Set(D::DelayTimeMs, 3.0f);
            one->Set(D::Wet, 0.5f);
            one->Set(D::Feedback, 0.7f);
            one->Set(D::StereoMode, mode);
        }
        Stereo signal{test::Noise(3, 8800), test::Noise(4, 8800)};
        const Stereo wanted = apart.Run(signal);
        inPlace.RunInPlace(signal);
        EXPECT_EQ(signal, wanted);
    }
}

double EnergyOf(const Stereo& signal) {
    double energy = 0.0;
    for (const Channel& channel : signal)
        for (const float x : channel)
            energy += double{x} * double{x};
    return energy;
}

// What goes round in the loop of one channel may meet itself anew wherever the delay moves, so that
// peaks come and go, but its energy only falls.
TEST(DelayTest, LoopAtUnityGainsNoEnergyAndFallsSilentBelowIt) {
    for (const float rate : kRates) {
        for (const float mode : {0.0f, 1.0f}) {
            Rig rig(rate);
            rig.Open(7.3f);
            rig.Set(D::StereoMode, mode);
            rig.Set(D::StereoWidthPP, 1.0f);
            rig.Set(D::Feedback, 1.0f);
            rig.Modulate(9, 0.0f);
            const uint32_t block = test::BlockOf(rate);
            rig.Run({test::Noise(1, block * 20), test::Noise(2, block * 20)});
            const Stereo stretch{Channel(block * 500), Channel(block * 500)};
            const double start = EnergyOf(rig.Run(stretch));
            std::mt19937 random(5);
            std::uniform_real_distribution<float> unit(-0.1f, 0.1f);
            for (uint32_t number = 0; number < 20; ++number) {
                if (number >= 10)
                    rig.Modulate(9, unit(random));
                const Stereo output = rig.Run(stretch);
                EXPECT_LT(EnergyOf(output), start) << number;
                EXPECT_LT(PeakOf(output), 6.0f) << number;
            }
            rig.Set(D::Feedback, 0.5f);
            rig.Run({Channel(block * 1500), Channel(block * 1500)});
            const Stereo silence{Channel(block * 40), Channel(block * 40)};
            EXPECT_LT(PeakOf(rig.Run(silence)), 1.0e-7f) << rate;
            rig.module.Reset(false);
            EXPECT_EQ(rig.Run(silence), silence);
        }
    }
}

}  // namespace
}  // namespace Quorvan::dsp
