#include "effects/Flanger.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
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

/// With the ranges that a slot gives it.
struct Rig : test::ModuleRig<Flanger> {
    explicit Rig(float rate) : ModuleRig(rate, test::BlockOf(rate), "Flanger") {
        module.Configure(Flanger::MinDelay, PotardKind::kLinear, 0.001f, 10.0f);
        module.Configure(Flanger::DepthFlanger, PotardKind::kLinear, 0.0f, 10.0f);
        C& chorus = Child();
        chorus.Configure(C::Feedback, PotardKind::kExponential, 0.0f, 0.99f, -1.0f);
        chorus.Configure(C::Freq, PotardKind::kExponential, 0.005f, 10.0f, 3.0f);
        chorus.Configure(C::LPFfc, PotardKind::kExponential, 1000.0f, 20000.0f, 4.0f);
        chorus.Configure(C::HPFfc, PotardKind::kExponential, 30.0f, 800.0f, 4.0f);
        Set(C::LPFfc, 9935.0f);
        Set(C::HPFfc, 125.0f);
        Set(C::StereoMode, 1.0f);
        module.Setup(rate, test::BlockOf(rate));
    }
    C& Child() { return module.Child<0>(); }
    void Set(uint32_t id, float value) { module.SetParameterValue(id, value); }
    void FiltersOff() {
        Set(C::LPFOn, 0.0f);
        Set(C::HPFOn, 0.0f);
    }
};

TEST(FlangerTest, MatchesAPlainModelWhileEverythingMoves) {
    for (const float rate : kRates) {
        test::SeededClock clock(1);
        const uint32_t block = test::BlockOf(rate);
        Rig rig(rate);
        // Not the shortest delay: at whole samples the all-pass keeps what rounding gives it.
        rig.Set(Flanger::MinDelay, 0.5f);
        rig.Set(Flanger::DepthFlanger, 2.0f);
        rig.module.Reset(true);  // passes the sweep on
        rig.module.Reset(true);  // jumps to it
        test::PlainChorus model(rig.Child(), rate, block);
        test::PlainChorus::Rows rows;
        std::mt19937 random(static_cast<uint32_t>(rate));
        std::uniform_real_distribution<float> unit(0.0f, 1.0f);
        std::set<uint32_t> written;
        for (uint32_t id = 0; id < C::kParameterCount; ++id)
            written.insert(id);
        float worst = 0.0f, peak = 1.0f;
        for (uint32_t number = 0; number < 1500; ++number) {
            for (const uint32_t id : {C::DryWet, C::Freq, C::Feedback, C::FBPolarity, C::StereoMode,
                                      C::LFOShape, C::LPFfc, C::HPFfc, C::LPFOn, C::HPFOn}) {
                if (unit(random) < 0.02f) {
                    rig.module.SetParameterNormalized(id, unit(random));
                    written.insert(id);
                }
            }
            for (uint32_t k = 0; k < rows.size(); ++k)
                if (unit(random) < 0.05f)
                    rig.Modulate(2 + k, *(rows[k] = unit(random) - 0.5f));
            if (unit(random) < 0.02f) {
                const float depth = 10.0f * unit(random);
                rig.Set(Flanger::DepthFlanger, depth);
                rig.Set(Flanger::MinDelay, 0.001f + 5.0f * unit(random) * unit(random));
                written.insert({C::DelayMs, C::Depth});
            }
            const Stereo input = test::SignalOfBlock(number, block, rate);
            const Stereo output = rig.Run(input, 9.0f);
            ASSERT_EQ(rig.Child().Value(C::Depth), rig.module.Value(Flanger::DepthFlanger));
            ASSERT_EQ(rig.Child().Value(C::DelayMs), rig.module.Value(Flanger::MinDelay) +
                                                         rig.module.Value(Flanger::DepthFlanger));
            const Stereo wanted = model.Run(input, true, written, rows, rig.tempo);
            written.clear();
            peak = std::max(peak * 0.97f, PeakOf(wanted));
            for (size_t c = 0; c < 2; ++c)
                for (uint32_t i = 0; i < block; ++i)
                    worst = std::max(worst, std::abs(output[c][i] - wanted[c][i]) / peak);
        }
        EXPECT_LT(worst, 2.0e-5f) << rate;
    }
}

TEST(FlangerTest, SweepsFromMinDelayToTwiceTheDepthAboveIt) {
    for (const float rate : kRates) {
        Rig rig(rate);
        rig.FiltersOff();
        rig.Set(C::DryWet, 1.0f);
        rig.Set(C::Freq, 2.0f);
        rig.Set(Flanger::MinDelay, 1.0f);
        rig.Set(Flanger::DepthFlanger, 2.0f);
        rig.module.Reset(true);  // passes the sweep on
        rig.module.Reset(true);  // jumps to it
        const auto distance = static_cast<size_t>(rate * 0.01f) / 4 * 4;
        Channel clicks(distance * 100);
        for (size_t at = 0; at < clicks.size(); at += distance)
            clicks[at] = 1.0f;
        const Stereo output = rig.Run({clicks, clicks});
        double shortest = 1.0, longest = 0.0;
        for (size_t at = 0; at < clicks.size(); at += distance) {
            const double delay =
                (test::CentreOf(output[0], at, at + distance - 1) - static_cast<double>(at)) /
                static_cast<double>(rate);
            shortest = std::min(shortest, delay);
            longest = std::max(longest, delay);
        }
        EXPECT_NEAR(shortest, 0.001, 0.00005) << rate;
        EXPECT_NEAR(longest, 0.005, 0.00005) << rate;
    }
}

TEST(FlangerTest, ShortestDelayIsTwoSamples) {
    for (const float rate : kRates) {
        Rig rig(rate);
        rig.FiltersOff();
        rig.Set(C::DryWet, 1.0f);
        const Channel noise = test::Noise(1, 9600);
        const Channel output = rig.Run({noise, noise})[0];
        for (size_t i = 7000; i < 9600; ++i)  // behind the glide from the longer start
            ASSERT_NEAR(output[i], noise[i - 2], 1.0e-4f) << rate;
    }
}

TEST(FlangerTest, StaysBoundedAtFullFeedbackAndFallsSilent) {
    for (const float rate : kRates) {
        Rig rig(rate);
        rig.Set(C::DryWet, 1.0f);
        rig.Set(C::Feedback, 0.99f);
        rig.Set(C::Freq, 10.0f);
        std::mt19937 random(5);
        std::uniform_real_distribution<float> unit(0.0f, 1.0f);
        const uint32_t block = test::BlockOf(rate);
        float peak = 0.0f;
        for (uint32_t number = 0; number < 3000; ++number) {
            if (number % 20 == 0) {
                rig.module.SetParameterNormalized(Flanger::MinDelay, unit(random));
                rig.module.SetParameterNormalized(Flanger::DepthFlanger, unit(random));
                rig.module.SetParameterNormalized(C::FBPolarity, unit(random));
            }
            const Stereo output =
                rig.Run({test::Noise(number, block), test::Noise(number + 9999, block)});
            ASSERT_TRUE(std::isfinite(output[0][0] + output[1][0]));
            peak = std::max(peak, PeakOf(output));
        }
        EXPECT_LT(peak, 100.0f);
        const size_t length = static_cast<size_t>(block) * 30000;
        const Stereo silence{Channel(length), Channel(length)};
        EXPECT_LT(PeakOf(rig.Run(silence), length - 4800), 1.0e-7f) << rate;
    }
}

}  // namespace
}  // namespace Quorvan::dsp
