#include "modulation/LFO.h"

#include "primitives/Xorshift.h"
#include "support/GeneratorRig.h"
#include "support/SeededClock.h"

namespace Quorvan::dsp {
namespace {

constexpr uint32_t kBlock = 48;

using Rig = GeneratorRig<LFO>;

/// An oscillator of 100 Hz: 480 samples a cycle.
struct Oscillator : Rig {
    explicit Oscillator(LFO::Shape shape) : Rig(48000.0f, kBlock, "LFO") {
        module.Configure(LFO::RateUnSynced, PotardKind::kLinear, 0.0f, 2000.0f);
        Set(LFO::RateUnSynced, 100.0f);
        Set(LFO::Waveform, static_cast<float>(shape));
    }
};

double Frac(double x) { return x - std::floor(x); }

TEST(LFOTest, WaveformsFollowThePhaseScaled) {
    const std::function<double(double)> shapes[] = {
        [](double p) { return std::sin(2.0 * std::numbers::pi * p); },
        [](double p) { return 1.0 - std::abs(2.0 - 4.0 * Frac(p + 0.25)); },
        [](double p) { return 1.0 - 2.0 * p; },
        [](double p) { return 2.0 * p - 1.0; },
        [](double p) { return p < 0.5 ? 1.0 : -1.0; },
    };
    for (uint32_t shape = 0; shape < 5; ++shape)
        for (const float start : {0.0f, 100.0f})
            for (const uint32_t stepsPerBlock : {kBlock, 1u}) {
                Oscillator lfo(static_cast<LFO::Shape>(shape));
                const bool unipolar = start > 0.0f;
                lfo.Set(LFO::PhaseInit, start);
                lfo.Set(LFO::Unipolar, unipolar ? 1.0f : 0.0f);
                lfo.Set(LFO::ControlRate, stepsPerBlock == 1 ? 1.0f : 0.0f);
                lfo.Set(LFO::Amp, 0.75f);
                lfo.Modulate(1, -0.25f);
                lfo.Blocks(20);
                ASSERT_EQ(lfo.outputs[0].size(), 20 * stepsPerBlock);
                EXPECT_EQ(lfo.outputs[1], std::vector<float>(20 * stepsPerBlock, 0.0f));
                for (uint32_t i = 0; i < 20 * stepsPerBlock; ++i) {
                    const double phase =
                        Frac((i * (kBlock / stepsPerBlock) + 1e-4) / 480.0 + start / 360.0);
                    const double height = shapes[shape](phase);
                    ASSERT_NEAR(lfo.outputs[0][i], 0.5 * (unipolar ? 0.5 + 0.5 * height : height),
                                1e-4)
                        << shape << ", " << i;
                }
            }
}

TEST(LFOTest, PhaseRowMovesTheReadingPointBothWays) {
    for (const float moved : {-0.125f, 0.25f}) {
        Oscillator lfo(LFO::kRisingSaw);
        lfo.Set(LFO::PhaseInit, 90.0f);
        lfo.Modulate(2, moved);
        lfo.Block();
        const double first = 0.25 + moved;
        EXPECT_NEAR(lfo.module.Value(LFO::CurrentPhaseFeedback), first, 1e-5);
        EXPECT_EQ(lfo.module.Value(LFO::CurrentValueLFeedback), lfo.outputs[0][0]);
        lfo.Blocks(9);
        for (uint32_t i = 0; i < 480; ++i)
            ASSERT_NEAR(lfo.outputs[0][i], 2.0 * Frac(first + (i + 1e-6) / 480.0) - 1.0, 1e-4) << i;
    }
}

TEST(LFOTest, SampleAndHoldTakesTheRandomSequenceOneStepACycle) {
    const FixedClock clock(0x12345678);
    Oscillator lfo(LFO::kSampleAndHold);
    lfo.Set(LFO::Stereo, 1.0f);
    lfo.Set(LFO::SnHStereoMode, 1.0f);
    lfo.Blocks(50);
    uint32_t state = 0x12345678;
    float expected = 0.0f;
    const auto draw = [&] {
        expected = static_cast<float>(prims::XorshiftStep(state)) / 2147483648.0f - 1.0f;
    };
    for (uint32_t unheard = 0; unheard < 3; ++unheard)  // a reset takes two, its restart one
        draw();
    for (uint32_t i = 0; i < 2400; ++i) {
        if (lfo.ticks[i] > 0.5f)
            draw();
        ASSERT_NEAR(lfo.outputs[0][i], expected, 1e-6f) << i;
        // The right channel runs over the block once the left one is through.
        const uint32_t blockEnd = i / kBlock * kBlock + kBlock - 1;
        ASSERT_EQ(lfo.outputs[1][i], -lfo.outputs[0][blockEnd]) << i;
    }
    EXPECT_EQ(lfo.TickSteps(), (std::vector<uint32_t>{0, 480, 960, 1440, 1920}));
}

TEST(LFOTest, SpreadHoldsTheRightValueBackByTwiceItsAngle) {
    Oscillator lfo(LFO::kSampleAndHold);
    lfo.Set(LFO::Stereo, 1.0f);
    lfo.Set(LFO::StereoSpread, 60.0f);
    lfo.Blocks(100);
    for (uint32_t i = 480; i < 4800; ++i)
        ASSERT_EQ(lfo.outputs[1][i], lfo.outputs[0][i - 160]) << i;
}

TEST(LFOTest, FadeRisesExponentiallyAfterARestartAndEndsAtOne) {
    Oscillator lfo(LFO::kSquare);
    lfo.Set(LFO::RateUnSynced, 0.0f);  // stands on the square's upper half
    const auto heard = [&lfo](float fade) {
        lfo.Set(LFO::Fade, fade);
        lfo.module.Reset(true);
        lfo.Forget();
        lfo.Blocks(60);
        return lfo.outputs[0];
    };
    const std::vector<float> fading = heard(2410.0f / 48000.0f);  // ends inside a block
    for (uint32_t i = 0; i < 2880; ++i)
        ASSERT_NEAR(fading[i], std::expm1(10.0 * std::min(i / 2410.0, 1.0)) / std::expm1(10.0),
                    1e-4)
            << i;
    EXPECT_EQ(heard(0.0f)[0], 1.0f);
}

// Five time constants, in seconds or in cycles.
TEST(LFOTest, SmoothingTimeCountsInSecondsOrInCycles) {
    for (const auto& [linked, synced] : {std::pair{0.0f, 0.0f}, {1.0f, 0.0f}, {1.0f, 1.0f}}) {
        Oscillator lfo(LFO::kSquare);
        lfo.Set(LFO::RateUnSynced, 20.0f);
        lfo.Set(LFO::MidiSync, synced);
        lfo.Set(LFO::RateSynced, 5.0f);  // one quarter note
        lfo.tempo = 1200.0f;             // twenty a second
        lfo.Set(LFO::SmoothRateLinked, linked);
        lfo.Set(LFO::Smooth, linked > 0.5f ? 0.2f : 0.01f);
        lfo.Blocks(20);
        for (uint32_t i = 0; i < 960; ++i)
            ASSERT_NEAR(lfo.outputs[0][i], 1.0 - std::exp(-5.0 * (i + 1) / 480.0), 1e-3) << i;
    }
}

}  // namespace
}  // namespace Quorvan::dsp
