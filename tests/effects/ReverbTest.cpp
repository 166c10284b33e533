#include "effects/Reverb.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>

#include "support/EchoMeters.h"
#include "support/ModuleRig.h"
#include "support/PlainReverb.h"
#include "support/TestSignals.h"

namespace Quorvan::dsp {
namespace {

using test::Channel;
using test::PeakOf;
using test::Stereo;
using R = Reverb;
using Core = DattorroCore;

constexpr uint32_t kBlock = 48;
constexpr float kPlateGain = 0.26801017f;

struct Rig : test::ModuleRig<R> {
    explicit Rig(float rate = 48000.0f, uint32_t block = kBlock) : ModuleRig(rate, block, "R") {}
    void Set(uint32_t id, float value) { module.SetParameterValue(id, value); }
    /// Early reflections alone, without the dry signal.
    void OnlyEarly(float size) {
        Set(R::Wet, 1.0f);
        Set(R::EarlyOn, 1.0f);
        Set(R::EarlyMix, 1.0f);
        Set(R::EarlySize, size);
        module.Reset(true);
    }
};

/// Random settings, also written to the module.
void Jump(test::PlainReverb::Values& s, Rig& rig, std::mt19937& random) {
    const auto draw = [&random](float from, float to) {
        return std::uniform_real_distribution<float>(from, to)(random);
    };
    const auto chance = [&](float share) { return draw(0.0f, 1.0f) < share; };
    s[Core::Predelay] = draw(0.0f, 0.05f);
    s[Core::Decay] = draw(0.0f, 0.8f);
    s[Core::Damping] = draw(0.0f, 0.5f);
    if (chance(0.3f))
        s[Core::Size] = draw(0.1f, 1.9f);
    s[Core::Freeze] = chance(0.1f) ? 1.0f : 0.0f;
    s[R::LPBandWith] = draw(100.0f, 20000.0f);
    s[R::HPBandWith] = draw(30.0f, 3000.0f);
    s[R::Wet] = draw(0.0f, 1.0f);
    s[R::EarlyOn] = chance(0.6f) ? 1.0f : 0.0f;
    s[R::EarlySize] = draw(0.0f, 1.0f);
    s[R::EarlyMix] = draw(0.0f, 1.0f);
    s[R::InvertEarly] = chance(0.5f) ? 1.0f : 0.0f;
    s[R::OutputGain] = draw(-20.0f, 6.0f);
    s[R::MSMix] = draw(0.0f, 0.5f);
    s[R::SmoothTimeDelayCont] = chance(0.2f) ? 0.0f : draw(0.0f, 0.1f);
    for (uint32_t id = 0; id < s.size(); ++id)
        rig.Set(id, s[id]);
}

TEST(ReverbTest, MatchesAPlainModelUnderJumpingParameters) {
    constexpr std::array<uint32_t, 7> kRows = {R::Wet,       R::LPBandWith, R::HPBandWith,
                                               Core::Decay,  Core::Size,    Core::Predelay,
                                               Core::Damping};  // from channel 2 on
    for (const float rate : {44100.0f, 48000.0f, 96000.0f}) {
        const auto block = static_cast<uint32_t>(rate / 1000.0f) / 4 * 4;
        Rig rig(rate, block);
        test::PlainReverb plain(rate, block);
        std::mt19937 random(5);
        test::PlainReverb::Values s;
        for (uint32_t id = 0; id < s.size(); ++id)
            s[id] = rig.module.FindRecord(id)->GetValue();
        plain.Reset(s, true);
        float sizeRow = 0.0f;
        for (uint32_t round = 0; round < 30; ++round) {
            Jump(s, rig, random);
            const auto length = block * (10u + static_cast<uint32_t>(random() % 60u));
            Stereo in{test::Noise(round, length, 0.5f),
                      test::Sine(300.0 + round, double{rate}, length)};
            if (round % 4 == 3)
                in = test::Impulse(length);
            test::PlainReverb::Values heard = s;
            if (round >= 12) {  // from here on the rows are active
                std::uniform_real_distribution<float> amount(-0.3f, 0.3f);
                for (uint32_t i = 0; i < kRows.size(); ++i) {
                    const float shift = amount(random);
                    rig.Modulate(2 + i, shift);
                    heard[kRows[i]] = rig.module.FindRecord(kRows[i])->GetModulatedValue(shift);
                }
                sizeRow = 5.0f * amount(random);
                rig.Modulate(9, sizeRow);
            }
            Stereo expected{Channel(length), Channel(length)};
            for (size_t at = 0; at < length; at += block)
                plain.Block(s, heard, sizeRow, {in[0].data() + at, in[1].data() + at},
                            {expected[0].data() + at, expected[1].data() + at}, block);
            const Stereo out = rig.Run(in, 9.0f);
            for (size_t c = 0; c < 2; ++c)
                for (size_t i = 0; i < length; ++i)
                    ASSERT_NEAR(out[c][i], expected[c][i], 5e-6f)
                        << rate << ' ' << round << ' ' << c << ' ' << i;
            if (round == 17 || round == 22) {
                rig.module.Reset(round == 22);
                plain.Reset(s, round == 22);
            }
        }
    }
}

TEST(ReverbTest, DryIsTheInputAtTheOutputGain) {
    const Stereo in{test::Noise(1, 9600), test::Noise(2, 9600)};
    for (const float gainDb : {0.0f, 6.0f, -20.0f, 20.0f}) {
        Rig rig;
        rig.Set(R::Wet, 0.0f);
        rig.Set(R::OutputGain, gainDb);
        rig.module.Reset(true);
        const float gain = std::pow(10.0f, gainDb * 0.05f);
        const Stereo out = rig.Run(in);
        for (size_t c = 0; c < 2; ++c)
            for (size_t i = 0; i < in[c].size(); ++i)
                ASSERT_EQ(out[c][i], in[c][i] * gain) << gainDb;
    }
}

TEST(ReverbTest, WetIsThePlateBehindItsInputFilters) {
    const Stereo in{test::Noise(1, 48000), test::Noise(2, 48000)};
    Rig rig;
    rig.Set(R::Wet, 1.0f);
    rig.Set(R::EarlyMix, 1.0f);  // of nothing, as they are off
    rig.module.Reset(true);
    OnePole low = OnePole::LowPass(rig.module.Value(R::LPBandWith), 48000.0f);
    OnePole high = OnePole::HighPass(rig.module.Value(R::HPBandWith), 48000.0f);
    float lowState = 0.0f, highState = 0.0f;
    Channel feed;
    for (size_t i = 0; i < in[0].size(); ++i)
        feed.push_back(high.Tick(low.Tick((in[0][i] + in[1][i]) * 0.5f, lowState), highState));
    test::ModuleRig<Core> core(48000.0f, kBlock, "");
    const Stereo plate = core.RunMono(feed);
    const Stereo out = rig.Run(in);
    for (size_t c = 0; c < 2; ++c)
        for (size_t i = 0; i < feed.size(); ++i)
            ASSERT_NEAR(out[c][i], plate[c][i] * kPlateGain, 2e-6f) << i;
}

TEST(ReverbTest, EarlyReflectionsStandWhereTheirSizePutsThem) {
    const float places[2][8] = {{0, 592, 652, 1054, 1158, 1232, 2059, 2649},
                                {0, 295, 327, 542, 562, 634, 1283, 2053}};
    const float gains[] = {1.0f, 0.6f, 0.5f, 0.4f, 0.3f, 0.3f, 0.1f, 0.1f};
    for (const float rate : {44100.0f, 48000.0f, 96000.0f})
        for (const float size : {0.0f, 0.3f, 1.0f})
            for (const bool inverted : {false, true}) {
                Rig rig(rate);
                rig.Set(R::InvertEarly, inverted ? 1.0f : 0.0f);
                rig.OnlyEarly(size);
                Stereo in{Channel(480), Channel(480)};
                in[0][0] = 1.0f;
                const Stereo out = rig.Run(in);
                OnePole low = OnePole::LowPass(rig.module.Value(R::LPBandWith), rate);
                OnePole high = OnePole::HighPass(rig.module.Value(R::HPBandWith), rate);
                float lowState = 0.0f, highState = 0.0f;
                Stereo expected{Channel(480), Channel(480)};
                for (size_t i = 0; i < 480; ++i) {
                    const float x = high.Tick(low.Tick(in[0][i], lowState), highState);
                    for (size_t c = 0; c < 2; ++c)
                        for (size_t t = 0; t < 8; ++t) {
                            const auto place = std::max<size_t>(
                                1, static_cast<size_t>(double{places[c][t]} * 0.01 * double{size} *
                                                       double{rate} / 29761.0));
                            const float gain = gains[inverted ? 7 - t : t];
                            if (i + place < 480)
                                expected[c][i + place] +=
                                    x * gain * (c == 0 ? 0.5f : 0.3f) * kPlateGain;
                        }
                }
                for (size_t c = 0; c < 2; ++c)
                    for (size_t i = 0; i < 480; ++i)
                        ASSERT_NEAR(out[c][i], expected[c][i], 1e-6f)
                            << rate << ' ' << size << ' ' << inverted << ' ' << c << ' ' << i;
            }
}

TEST(ReverbTest, SideShareMakesMonoOrLeavesTheSides) {
    const Stereo in{test::Noise(1, 48000), test::Noise(2, 48000)};
    const auto run = [&in](float share) {
        Rig rig;
        rig.Set(R::Wet, 1.0f);
        rig.Set(R::MSMix, share);
        rig.module.Reset(true);
        return rig.Run(in);
    };
    const Stereo apart = run(0.5f), mono = run(0.0f);
    for (size_t i = 0; i < in[0].size(); ++i) {
        EXPECT_NEAR(mono[0][i], mono[1][i], 1e-6f);
        EXPECT_NEAR(mono[0][i], apart[0][i] + apart[1][i], 1e-6f);
    }
    EXPECT_NE(apart[0], apart[1]);
}

TEST(ReverbTest, CutsAndInPlaceMakeNoDifference) {
    const Stereo in{test::Noise(1, 19200), test::Noise(2, 19200)};
    const auto run = [&in](uint32_t block, bool inPlace) {
        Rig rig(48000.0f, block);
        rig.Set(R::EarlyOn, 1.0f);
        rig.Set(R::EarlyMix, 0.5f);
        rig.module.Reset(true);
        if (!inPlace)
            return rig.Run(in, 3.0f);
        Stereo signal = in;
        rig.RunInPlace(signal);
        return signal;
    };
    const Stereo out = run(kBlock, false);
    EXPECT_EQ(run(kBlock, true), out);
    EXPECT_EQ(run(16, false), out);
}

TEST(ReverbTest, StaysBoundedInALoopAtUnityAndDiesAwayOutsideIt) {
    Rig rig;
    rig.Set(Core::Decay, 0.925f);
    rig.Set(R::EarlyOn, 1.0f);
    rig.Set(R::EarlyMix, 0.3f);
    rig.module.Reset(true);
    Stereo loop = test::Impulse(kBlock);
    const Channel noise = test::Noise(1, kBlock * 100, 0.5f);
    for (size_t round = 0; round < 4000; ++round) {
        rig.Set(Core::Size, round % 400 < 200 ? 0.1f : 1.9f);
        loop = rig.Run(loop);
        for (Channel& side : loop)
            for (size_t i = 0; i < kBlock; ++i) {
                ASSERT_TRUE(std::isfinite(side[i]));
                ASSERT_LT(std::abs(side[i]), 40.0f);
                // What goes round is held to full scale.
                side[i] = std::clamp(side[i] + noise[round % 100 * kBlock + i], -1.0f, 1.0f);
            }
    }
    rig.Set(Core::Decay, 0.5f);
    rig.Set(Core::Size, 0.3f);
    const Stereo silence{Channel(192000), Channel(192000)};
    rig.Run(silence);
    rig.Run(silence);
    EXPECT_LT(PeakOf(rig.Run(silence)), 1e-7f);
}

TEST(ReverbTest, LowAndUnusableRatesStayStable) {
    const Stereo in{test::Noise(1, 24000), test::Noise(2, 24000)};
    for (const float rate : {-1.0f, 0.0f, 8000.0f, 10001.0f, 22050.0f}) {
        Rig rig(rate);
        rig.Set(Core::Predelay, 0.2f);
        rig.Set(Core::Size, 0.1f);
        rig.Set(R::EarlyOn, 1.0f);
        rig.Set(R::EarlyMix, 0.5f);
        const float peak = PeakOf(rig.Run(in));
        EXPECT_GT(peak, 0.1f) << rate;
        EXPECT_LT(peak, 5.0f) << rate;
    }
}

}  // namespace
}  // namespace Quorvan::dsp
