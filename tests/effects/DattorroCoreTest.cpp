#include "effects/DattorroCore.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <string>

#include "support/EchoMeters.h"
#include "support/ModuleRig.h"
#include "support/PlainReverb.h"
#include "support/TestSignals.h"

namespace Quorvan::dsp {
namespace {

using test::Channel;
using test::PeakOf;
using test::Stereo;
using Core = DattorroCore;

constexpr uint32_t kBlock = 48;

struct Rig : test::ModuleRig<Core> {
    explicit Rig(float rate = 48000.0f, uint32_t block = kBlock) : ModuleRig(rate, block, "Core") {}
    void Set(uint32_t id, float value) { module.SetParameterValue(id, value); }
    /// Nothing but delays.
    void Bare(float decay) {
        for (const uint32_t id :
             {Core::Predelay, Core::InputDiffusion1, Core::InputDiffusion2, Core::DecayDiffusion1,
              Core::DecayDiffusion2, Core::Damping, Core::Excursion})
            Set(id, 0.0f);
        Set(Core::Decay, decay);
        module.Reset(true);
    }
    Stereo Impulse(size_t length) { return RunMono(test::Impulse(length)[0]); }
    Stereo Silence(size_t length) { return RunMono(Channel(length)); }
};

double EnergyOf(const Stereo& signal, size_t begin, size_t end) {
    double energy = 0.0;
    for (const Channel& channel : signal)
        for (size_t i = begin; i < end; ++i)
            energy += double{channel[i]} * double{channel[i]};
    return energy;
}

/// Response of a plate that is only delays: each arrival from the lengths.
Stereo BareResponse(float rate, float size, float predelay, float decay, size_t length) {
    const float scale = size * (rate * 3.360102e-05f);
    const auto at = [scale](float base) { return static_cast<size_t>(base * scale); };
    Stereo out{Channel(length), Channel(length)};
    const auto add = [&out](uint32_t side, size_t time, float amount) {
        if (time < out[side].size())
            out[side][time] += amount;
    };
    // A branch's input travels to its first line, its second all-pass and its second line; a tap
    // reads what has just been written with a delay of 1.
    const auto follow = [&](auto&& self, uint32_t b, size_t time, float amount) -> void {
        if (time >= length)
            return;
        const size_t first = time + at(b == 0 ? 908 : 672) - 1;
        const size_t middle = first + at(b == 0 ? 4217 : 4453);
        const size_t last = middle + at(b == 0 ? 2656 : 1800);
        const uint32_t other = 1 - b;
        add(b, first + at(b == 0 ? 266 : 353), amount);
        add(b, first + at(b == 0 ? 2974 : 3627), amount);
        add(b, middle + at(b == 0 ? 1913 : 1228), -amount);
        add(b, last + at(b == 0 ? 1996 : 2673), amount);
        add(other, first + at(b == 0 ? 2111 : 1990), -amount);
        add(other, middle + at(b == 0 ? 335 : 187), -amount);
        add(other, last + at(b == 0 ? 121 : 1066), -amount);
        const size_t lap = last + 1 + (b == 0 ? at(3163) - 2 : at(3720) - 1);
        self(self, other, lap, amount * decay);
    };
    const size_t entry =
        static_cast<size_t>(rate * predelay) + at(142) + at(407) + at(379) + at(277);
    follow(follow, 0, entry, 1.0f);
    follow(follow, 1, entry, 1.0f);
    return out;
}

TEST(DattorroCoreTest, WithoutDiffusionItIsTheDelaysOfItsTables) {
    for (const float rate : {29761.0f, 44100.0f, 48000.0f, 96000.0f})
        for (const float size : {0.1f, 0.77f, 1.0f, 1.9f})
            for (const float predelay : {0.0f, 0.00002f, 0.05f, 0.2f}) {
                Rig rig(rate);
                rig.Bare(0.5f);
                rig.Set(Core::Size, size);
                rig.Set(Core::Predelay, predelay);
                rig.module.Reset(true);
                const auto length = static_cast<size_t>(rate) / kBlock * kBlock;
                const Stereo out = rig.Impulse(length);
                EXPECT_EQ(out, BareResponse(rate, size, predelay, 0.5f, length))
                    << rate << ' ' << size << ' ' << predelay;
            }
}

TEST(DattorroCoreTest, LowRatesRunAtTheReferenceRate) {
    Rig low(8000.0f), reference(29761.0f);
    for (Rig* rig : {&low, &reference})
        rig->Set(Core::Predelay, 0.01f);
    low.module.Reset(true);
    reference.module.Reset(true);
    EXPECT_EQ(low.Impulse(9600), reference.Impulse(9600));
}

/// Random settings, also written to the module.
void Jump(test::PlainPlate::Values& s, Rig& rig, std::mt19937& random) {
    const auto draw = [&random](float from, float to) {
        return std::uniform_real_distribution<float>(from, to)(random);
    };
    const auto chance = [&](float share) { return draw(0.0f, 1.0f) < share; };
    if (chance(0.5f))
        s[Core::Predelay] = chance(0.3f) ? 0.0f : draw(0.0f, 0.2f);
    if (chance(0.4f))
        s[Core::Size] = chance(0.3f) ? 0.1f : draw(0.1f, 1.9f);
    s[Core::InputDiffusion1] = draw(0.0f, 0.9f);
    s[Core::InputDiffusion2] = draw(0.0f, 0.9f);
    s[Core::Decay] = draw(0.0f, 0.925f);
    s[Core::DecayDiffusion1] = draw(0.0f, 0.9f);
    s[Core::DecayDiffusion2] = draw(0.0f, 0.9f);
    s[Core::Damping] = chance(0.3f) ? 0.0f : draw(0.0f, 1.0f);
    s[Core::Excursion] = draw(0.0f, 1.0f);
    s[Core::OscillatorRate] = draw(0.0f, 1.0f);
    s[Core::OscillatorSpread] = draw(0.0f, 1.0f);
    s[Core::SmoothTimeDelay] = chance(0.2f) ? 0.0f : draw(0.01f, 0.1f);
    s[Core::Freeze] = chance(0.2f) ? 1.0f : 0.0f;
    for (uint32_t id = 0; id < s.size(); ++id)
        rig.Set(id, s[id]);
}

/// What the block hears of a parameter with amount on its row.
float Modulated(Rig& rig, uint32_t id, uint32_t channel, float amount) {
    rig.Modulate(channel, amount);
    return rig.module.ParameterAt(id).GetModulatedValue(amount);
}

TEST(DattorroCoreTest, MatchesAPlainModelUnderJumpingParameters) {
    for (const float rate : {44100.0f, 48000.0f, 96000.0f}) {
        const auto block = static_cast<uint32_t>(rate / 1000.0f) / 4 * 4;
        Rig rig(rate, block);
        test::PlainPlate plain(rate, block);
        std::mt19937 random(3);
        test::PlainPlate::Values s;
        for (uint32_t id = 0; id < s.size(); ++id)
            s[id] = rig.module.Value(id);
        plain.Reset(s, true);
        float sizeRow = 0.0f;
        for (uint32_t round = 0; round < 40; ++round) {
            Jump(s, rig, random);
            const auto length = block * (10u + static_cast<uint32_t>(random() % 60u));
            const auto index = static_cast<size_t>(round);
            const Channel in = index % 3 == 0   ? test::Noise(round, length, 0.5f)
                               : index % 3 == 1 ? test::Sine(300.0 + round, double{rate}, length)
                                                : test::Impulse(length)[0];
            test::PlainPlate::Values heard = s;
            if (round >= 15) {  // from here on the rows are active
                const auto amount = [&random] {
                    return std::uniform_real_distribution<float>(-0.5f, 0.5f)(random);
                };
                heard[Core::Size] = Modulated(rig, Core::Size, 2, amount());
                heard[Core::Predelay] = Modulated(rig, Core::Predelay, 3, amount());
                heard[Core::Damping] = Modulated(rig, Core::Damping, 4, amount());
                sizeRow = 4.0f * amount();
                rig.Modulate(5, sizeRow);
            }
            Stereo expected{Channel(length), Channel(length)};
            for (size_t at = 0; at < length; at += block)
                plain.Block(s, heard, sizeRow, in.data() + at,
                            {expected[0].data() + at, expected[1].data() + at}, block);
            const Stereo out = rig.RunMono(in);
            for (size_t c = 0; c < 2; ++c)
                for (size_t i = 0; i < length; ++i)
                    ASSERT_NEAR(out[c][i], expected[c][i], 1e-6f)
                        << rate << ' ' << round << ' ' << c << ' ' << i;
            if (round == 21 || round == 30) {
                rig.module.Reset(round == 30);
                plain.Reset(s, round == 30);
            }
        }
    }
}

TEST(DattorroCoreTest, TailFallsByTheDecayOnceALap) {
    for (const float decay : {0.85f, 0.9f, 0.925f}) {
        for (const float size : {0.5f, 1.0f}) {
            Rig rig;
            rig.Set(Core::Decay, decay);
            rig.Set(Core::Size, size);
            rig.Set(Core::Damping, 0.0f);
            rig.Set(Core::Excursion, 0.0f);
            rig.module.Reset(true);
            const double lap = double{size} * 21589.0 / 29761.0;  // seconds, round both branches
            const auto span = static_cast<size_t>(48000.0 * 2.0 * lap);
            const Stereo out = rig.Impulse(span / kBlock * kBlock * 3);
            const double fall = 10.0 * std::log10(EnergyOf(out, span * 2, out[0].size()) /
                                                  EnergyOf(out, span, span * 2));
            const double wanted = 2.0 * 2.0 * 20.0 * std::log10(double{decay});
            // What the all-passes keep back of each lap is the more to be heard the faster it
            // falls.
            EXPECT_NEAR(fall / wanted, 1.0, 0.05) << decay << ' ' << size;
        }
    }
}

TEST(DattorroCoreTest, DampingKeepsItsCornerOverTheRates) {
    for (const float rate : {29761.0f, 44100.0f, 48000.0f, 96000.0f}) {
        for (const float damping : {0.2f, 0.5f, 0.8f}) {
            Rig rig(rate);
            rig.Bare(0.0f);
            rig.Set(Core::Damping, damping);
            rig.module.Reset(true);
            const auto length = static_cast<size_t>(rate) / kBlock * kBlock;
            const Stereo out = rig.Impulse(length);
            // The right side's last tap is the first to be heard of what has passed the left
            // branch.
            const Stereo bare = BareResponse(rate, 1.0f, 0.0f, 0.0f, length);
            const float scale = rate * 3.360102e-05f;
            size_t at = 0;
            for (const float base : {142.0f, 407.0f, 379.0f, 277.0f, 908.0f, 4217.0f, 335.0f})
                at += static_cast<size_t>(base * scale);
            --at;
            ASSERT_EQ(bare[1][at], -1.0f);
            const float kept = 1.0f + out[1][at];  // of each sample to the next
            EXPECT_NEAR(kept / (1.0f - kept) / scale * (1.0f - damping) / damping, 1.0f, 1e-4f);
            for (uint32_t n = 0; n < 20; ++n)
                EXPECT_NEAR(out[1][at + n], -(1.0f - kept) * std::pow(kept, static_cast<float>(n)),
                            1e-6f);
        }
    }
}

TEST(DattorroCoreTest, FreezeHoldsTheTailAndKeepsTheInputOut) {
    Rig rig, deaf;
    Stereo held, other;
    for (Rig* r : {&rig, &deaf}) {
        r->Set(Core::Decay, 0.9f);
        r->Set(Core::Damping, 0.5f);
        r->module.Reset(true);
        r->RunMono(test::Noise(1, 48000, 0.5f));
        r->Set(Core::Freeze, 1.0f);
        r->Silence(9600);
    }
    held = rig.Silence(480000);
    other = deaf.RunMono(test::Noise(2, 480000));
    EXPECT_EQ(held, other);
    // A lap of the tank is the period of the loudness.
    const auto lap = static_cast<size_t>(21586.0 / 29761.0 * 48000.0);
    const double first = EnergyOf(held, 0, lap), last = EnergyOf(held, 480000 - lap, 480000);
    EXPECT_GT(first, 1.0);
    EXPECT_NEAR(last / first, 1.0, 0.05);

    rig.Set(Core::Freeze, 0.0f);
    rig.Silence(480000);
    EXPECT_LT(EnergyOf(rig.Silence(lap), 0, lap), 1e-3 * last);
}

TEST(DattorroCoreTest, CutsAndInPlaceMakeNoDifference) {
    const Channel in = test::Noise(1, 19200);
    const auto run = [&in](uint32_t block, bool inPlace) {
        Rig rig(48000.0f, block);
        rig.Set(Core::Size, 0.1f);
        rig.module.Reset(true);
        if (!inPlace)
            return rig.RunMono(in);
        Stereo signal{in, Channel(in.size())};
        float* outputs[2] = {};
        for (size_t at = 0; at < in.size(); at += block) {
            outputs[0] = signal[0].data() + at;
            outputs[1] = signal[1].data() + at;
            ProcessBlock cut;
            cut.inputs = cut.outputs = outputs;
            cut.numInputs = 1;
            cut.numOutputs = 2;
            cut.numFrames = block;
            rig.module.Process(cut);
        }
        return signal;
    };
    const Stereo out = run(kBlock, false);
    EXPECT_GT(PeakOf(out), 0.1f);
    EXPECT_EQ(run(16, false), out);
    EXPECT_EQ(run(192, false), out);
    EXPECT_EQ(run(kBlock, true), out);
}

TEST(DattorroCoreTest, ANewRateStartsAfresh) {
    Rig rig, fresh(96000.0f);
    rig.RunMono(test::Noise(1, 48000));
    rig.module.Setup(96000.0f, kBlock);
    const Channel in = test::Noise(2, 48000);
    EXPECT_EQ(rig.RunMono(in), fresh.RunMono(in));
}

TEST(DattorroCoreTest, SilenceDiesAway) {
    Rig rig;
    rig.Set(Core::Size, 0.3f);
    rig.Set(Core::Decay, 0.5f);
    rig.RunMono(test::Noise(1, 48000));
    rig.Silence(240000);
    EXPECT_LT(PeakOf(rig.Silence(4800)), 1e-7f);
    rig.module.Reset(false);
    EXPECT_EQ(PeakOf(rig.Silence(48000)), 0.0f);
}

}  // namespace
}  // namespace Quorvan::dsp
