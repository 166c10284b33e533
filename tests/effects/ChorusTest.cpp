#include "effects/Chorus.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <numbers>
#include <random>
#include <set>

#include "support/ChangingSignal.h"
#include "support/EchoMeters.h"
#include "support/ModuleRig.h"
#include "support/PlainChorus.h"
#include "support/SeededClock.h"
#include "support/TestSignals.h"

namespace Quorvan::dsp {
namespace {

using test::Channel;
using test::PeakOf;
using test::Stereo;
using C = Chorus;

constexpr std::array<float, 3> kRates{44100.0f, 48000.0f, 96000.0f};

struct Rig : test::ModuleRig<C> {
    explicit Rig(float rate) : ModuleRig(rate, test::BlockOf(rate), "Chorus") {}
    void Set(uint32_t id, float value) { module.SetParameterValue(id, value); }
    /// One voice, stereo, without motion, feedback or filters, at rest there.
    void Still(float delayMs, float dryWet) {
        Set(C::DelayMs, delayMs);
        Set(C::Depth, 0.0f);
        Set(C::DryWet, dryWet);
        Set(C::StereoMode, 1.0f);
        module.Reset(true);
    }
    /// Gain and phase at a multiple of 10 Hz, once the start has died away.
    std::complex<double> Response(double hertz, double rate) {
        const auto window = static_cast<size_t>(rate) / 10;
        const auto start = window * 3;
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

TEST(ChorusTest, MatchesAPlainModelWhileEverythingMoves) {
    for (const float rate : kRates) {
        test::SeededClock clock(1);
        const uint32_t block = test::BlockOf(rate);
        Rig rig(rate);
        test::PlainChorus model(rig.module, rate, block);
        test::PlainChorus::Rows rows;
        std::mt19937 random(static_cast<uint32_t>(rate));
        std::uniform_real_distribution<float> unit(0.0f, 1.0f);
        std::set<uint32_t> written;
        for (uint32_t id = 0; id < C::kParameterCount; ++id)
            written.insert(id);
        float worst = 0.0f;
        for (uint32_t number = 0; number < 1500; ++number) {
            for (uint32_t id = 0; id < C::kParameterCount; ++id) {
                const bool isSwitch = id >= C::FBPolarity && id != C::LPFfc && id != C::HPFfc;
                if (unit(random) < (isSwitch ? 0.01f : 0.05f)) {
                    rig.module.SetParameterNormalized(id, unit(random));
                    written.insert(id);
                }
            }
            for (uint32_t k = 0; k < rows.size(); ++k)
                if (unit(random) < 0.05f)
                    rig.Modulate(2 + k, *(rows[k] = unit(random) - 0.5f));
            if (number % 400 == 399) {
                const bool hard = number % 800 == 799;
                rig.module.Reset(hard);
                model.Reset(hard);
                for (uint32_t id = 0; hard && id < C::kParameterCount; ++id)
                    written.insert(id);
            }
            rig.tempo = number < 700 ? 120.0f : 1000.0f;
            const uint32_t length = number % 7 == 3 ? block - 12 : block;
            const bool hasRight = number % 50 > 5;
            const Stereo input = test::SignalOfBlock(number, length, rate);
            const Stereo output = hasRight ? rig.Run(input, 9.0f) : rig.RunMono(input[0], 9.0f);
            const Stereo wanted = model.Run(input, hasRight, written, rows, rig.tempo);
            written.clear();
            for (size_t c = 0; c < 2; ++c)
                for (uint32_t i = 0; i < length; ++i)
                    worst = std::max(worst, std::abs(output[c][i] - wanted[c][i]));
        }
        EXPECT_LT(worst, 2.0e-5f) << rate;
    }
}

/// Milliseconds of a delay that ends halfway between two samples at 48 kHz: there the all-pass
/// answers a click with 1/3, 8/9, -8/27 and so on.
float Halfway(int samples) { return (static_cast<float>(samples) + 0.5f) / 48.0f; }

TEST(ChorusTest, MixIsEqualPowerAndTheDelayWhereItIsSet) {
    for (const auto& [dryWet, dry, wet] :
         {std::array{0.0f, 1.0f, 0.0f}, {0.5f, 0.70710678f, 0.70710678f}, {1.0f, 0.0f, 1.0f}}) {
        for (const int samples : {30, 240, 959}) {
            Rig rig(48000.0f);
            rig.Still(Halfway(samples), dryWet);
            const Channel output = rig.Run(test::Impulse(2400))[1];
            const auto at = static_cast<size_t>(samples);
            EXPECT_NEAR(output[0], dry, 1.0e-6f);
            EXPECT_EQ(output[at - 1], 0.0f);
            EXPECT_NEAR(output[at], wet / 3.0f, 2.0e-4f) << samples;
            EXPECT_NEAR(output[at + 1], wet * 8.0f / 9.0f, 2.0e-4f) << samples;
            EXPECT_NEAR(output[at + 2], -wet * 8.0f / 27.0f, 2.0e-4f) << samples;
        }
    }
}

TEST(ChorusTest, FeedbackMakesACombByItsSign) {
    for (const float polarity : {0.0f, 1.0f}) {
        for (const float rate : {48000.0f, 96000.0f}) {
            Rig rig(rate);
            rig.Set(C::Feedback, 0.6f);
            rig.Set(C::FBPolarity, polarity);
            rig.Still(5.0f, 1.0f);
            // 5 ms: peaks of one sign at the multiples of 200 Hz, of the other between.
            const double atMultiple = polarity == 1.0f ? 1.0 / 0.4 : 1.0 / 1.6;
            const double between = polarity == 1.0f ? 1.0 / 1.6 : 1.0 / 0.4;
            for (const double hertz : {200.0, 1000.0, 9000.0})
                EXPECT_NEAR(std::abs(rig.Response(hertz, double{rate})), atMultiple, 1.0e-3);
            for (const double hertz : {100.0, 300.0, 8700.0})
                EXPECT_NEAR(std::abs(rig.Response(hertz, double{rate})), between, 1.0e-3);
        }
    }
}

TEST(ChorusTest, FractionalReadIsFlat) {
    for (const float rate : kRates) {
        Rig rig(rate);
        rig.Still(3.337f, 1.0f);
        for (const double hertz : {100.0, 5000.0, 15000.0})
            EXPECT_NEAR(std::abs(rig.Response(hertz, double{rate})), 1.0, 1.0e-4) << rate;
        const double phase = std::arg(rig.Response(100.0, double{rate}));
        EXPECT_NEAR(phase, -2.0 * std::numbers::pi * 0.3337, 1.0e-4) << rate;
    }
}

TEST(ChorusTest, FiltersOfTheWetSignalAreFirstOrderAtTheirCorners) {
    Rig rig(48000.0f);
    rig.Set(C::LPFOn, 1.0f);
    rig.Set(C::LPFfc, 3000.0f);
    rig.Still(2.0f, 1.0f);
    EXPECT_NEAR(std::abs(rig.Response(30.0, 48000.0)), 1.0, 1.0e-3);
    EXPECT_NEAR(std::abs(rig.Response(3000.0, 48000.0)), std::sqrt(0.5), 1.0e-3);
    rig.Set(C::LPFOn, 0.0f);
    rig.Set(C::HPFOn, 1.0f);
    rig.Set(C::HPFfc, 100.0f);
    rig.module.Reset(true);
    EXPECT_NEAR(std::abs(rig.Response(100.0, 48000.0)), std::sqrt(0.5), 1.0e-3);
    EXPECT_NEAR(std::abs(rig.Response(10.0, 48000.0)), 0.0995, 1.0e-3);
}

/// Impulses at wide distances and where their echoes are, less where they went in, in samples.
std::vector<double> EchoDelays(const Channel& output, size_t distance, size_t longest) {
    std::vector<double> delays;
    for (size_t at = 0; at + distance <= output.size(); at += distance)
        delays.push_back(test::CentreOf(output, at, at + longest) - static_cast<double>(at));
    return delays;
}

// At the time an echo comes out the oscillator has gone on from where it went in.
TEST(ChorusTest, DelaySweepsWithTheOscillatorTheRightAQuarterCycleAhead) {
    for (const float rateF : kRates) {
        const auto rate = static_cast<double>(rateF);
        for (const int shape : {0, 1}) {
            Rig rig(rateF);
            rig.Set(C::Freq, 1.0f);
            rig.Set(C::LFOShape, static_cast<float>(shape));
            rig.Still(10.0f, 1.0f);
            rig.Set(C::Depth, 4.0f);
            rig.module.Reset(true);
            const auto distance = static_cast<size_t>(rate) / 20 / 4 * 4;
            Channel clicks(distance * 20);
            for (size_t at = 0; at < clicks.size(); at += distance)
                clicks[at] = 1.0f;
            const Stereo output = rig.Run({clicks, clicks});
            for (size_t c = 0; c < 2; ++c) {
                const auto delays = EchoDelays(output[c], distance, distance - 1);
                for (size_t k = 0; k < delays.size(); ++k) {
                    const double seconds = (static_cast<double>(k * distance) + delays[k]) / rate;
                    double turn = seconds + 0.25 * static_cast<double>(c);
                    const double sine = std::sin(2.0 * std::numbers::pi * turn);
                    const double swing =
                        shape == 0 ? sine : std::asin(sine) * 2.0 / std::numbers::pi;
                    EXPECT_NEAR(delays[k] / rate, 0.010 + 0.004 * swing, 0.00005)
                        << shape << ", " << c << ", " << k << " at " << rate;
                }
            }
        }
    }
}

TEST(ChorusTest, VoicesStandFiveMillisecondsApartAndShareThePower) {
    for (uint32_t voices = 1; voices <= 3; ++voices) {
        Rig rig(48000.0f);
        rig.Set(C::Voices, static_cast<float>(voices));
        rig.Still(Halfway(200), 1.0f);
        const Channel output = rig.Run(test::Impulse(2400))[0];
        const float share = 8.0f / 9.0f / std::sqrt(static_cast<float>(voices));
        for (uint32_t v = 0; v < 3; ++v)
            EXPECT_NEAR(output[201 + 240 * v], v < voices ? share : 0.0f, 1.0e-4f) << voices;
    }
}

TEST(ChorusTest, MonoTakesTheMeanAndGivesBothSidesTheSame) {
    const Stereo input{test::Noise(1, 9600), test::Noise(2, 9600)};
    Channel mean(9600);
    for (size_t i = 0; i < mean.size(); ++i)
        mean[i] = 0.5f * (input[0][i] + input[1][i]);
    Rig rig(48000.0f), alone(48000.0f);
    for (Rig* one : {&rig, &alone})
        one->Set(C::Voices, 3.0f);
    const Stereo output = rig.Run(input);
    EXPECT_EQ(output[0], output[1]);
    EXPECT_EQ(output, alone.RunMono(mean));
}

TEST(ChorusTest, RunsInPlace) {
    for (const float stereo : {0.0f, 1.0f}) {
        Rig apart(44100.0f), inPlace(44100.0f);
        for (Rig* one : {&apart, &inPlace}) {
            one->Set(C::Voices, 2.0f);
            one->Set(C::Feedback, 0.5f);
            one->Set(C::StereoMode, stereo);
        }
        Stereo signal{test::Noise(3, 8800), test::Noise(4, 8800)};
        const Stereo wanted = apart.Run(signal);
        inPlace.RunInPlace(signal);
        EXPECT_EQ(signal, wanted);
    }
}

TEST(ChorusTest, StaysBoundedAtFullFeedbackAndFallsSilent) {
    for (const float rate : kRates) {
        for (const float polarity : {0.0f, 1.0f}) {
            Rig rig(rate);
            rig.Set(C::Voices, 3.0f);
            rig.Set(C::StereoMode, 1.0f);
            rig.Set(C::Feedback, 0.9f);
            rig.Set(C::FBPolarity, polarity);
            rig.Set(C::Freq, 5.0f);
            rig.Set(C::LPFOn, 1.0f);
            rig.Set(C::LPFfc, 10000.0f);
            std::mt19937 random(5);
            std::uniform_real_distribution<float> unit(0.0f, 1.0f);
            const uint32_t block = test::BlockOf(rate);
            float peak = 0.0f;
            for (uint32_t number = 0; number < 2000; ++number) {
                if (number % 20 == 0) {
                    rig.module.SetParameterNormalized(C::DelayMs, unit(random));
                    rig.module.SetParameterNormalized(C::Depth, unit(random));
                }
                const Stereo output =
                    rig.Run({test::Noise(number, block), test::Noise(number + 9999, block)});
                ASSERT_TRUE(std::isfinite(output[0][0] + output[1][0]));
                peak = std::max(peak, PeakOf(output));
            }
            EXPECT_LT(peak, 20.0f);
            const Stereo silence{Channel(static_cast<size_t>(block) * 4000),
                                 Channel(static_cast<size_t>(block) * 4000)};
            EXPECT_LT(PeakOf(rig.Run(silence), silence[0].size() - 4800), 1.0e-7f) << rate;
        }
    }
}

TEST(ChorusTest, ResetJumpsToTheMix) {
    Rig rig(48000.0f);
    rig.Run({test::Noise(1, 9600), test::Noise(2, 9600)});
    rig.Set(C::StereoMode, 1.0f);
    rig.Set(C::DryWet, 0.0f);
    rig.module.Reset(false);
    for (const size_t length : {size_t{36}, size_t{480}}) {  // the first block is a short one
        const Stereo input{test::Noise(3, length), test::Noise(4, length)};
        EXPECT_EQ(rig.Run(input), input);
    }
}

TEST(ChorusTest, ResetSilencesTheLines) {
    Rig rig(48000.0f);
    rig.Set(C::Feedback, 0.9f);
    rig.Set(C::LPFOn, 1.0f);
    rig.Set(C::HPFOn, 1.0f);
    rig.Run({test::Noise(1, 9600), test::Noise(2, 9600)});
    rig.module.Reset(false);
    const Stereo silence{Channel(9600), Channel(9600)};
    EXPECT_EQ(rig.Run(silence), silence);
}

}  // namespace
}  // namespace Quorvan::dsp
