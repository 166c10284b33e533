#include "effects/DattorroCore.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

#include "support/EchoMeters.h"
#include "support/ModuleRig.h"
#include "support/TestSignals.h"

namespace Quorvan::dsp {
namespace {

using test::Channel;
using test::Stereo;
using Core = DattorroCore;

constexpr uint32_t kBlock = 48;

// Sample by sample it is compared as the plate of the reverb.

struct Rig : test::ModuleRig<Core> {
    explicit Rig(float rate = 48000.0f) : ModuleRig(rate, kBlock, "Core") {}
    void Set(uint32_t id, float value) { module.SetParameterValue(id, value); }
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

TEST(DattorroCoreTest, LowRatesRunAtTheReferenceRate) {
    Rig low(8000.0f), reference(29761.0f);
    for (Rig* rig : {&low, &reference})
        rig->Set(Core::Predelay, 0.01f);
    low.module.Reset(true);
    reference.module.Reset(true);
    EXPECT_EQ(low.Impulse(9600), reference.Impulse(9600));
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

TEST(DattorroCoreTest, FrozenTailHeedsNoBlockLength) {
    std::array<Stereo, 2> held;
    for (const size_t later : {size_t{0}, size_t{1}}) {
        Rig rig;
        rig.Set(Core::Decay, 1.0f);
        rig.Set(Core::Damping, 0.0f);
        rig.Set(Core::Excursion, 1.0f);
        rig.Set(Core::OscillatorRate, 1.0f);
        rig.module.Reset(true);
        rig.RunMono(test::Noise(1, 9600, 0.5f));
        for (int n = 0; n < 3000; ++n)  // shorter than what comes, and long enough to move
            rig.Silence(4);
        rig.Set(Core::Freeze, 1.0f);
        for (size_t n = 0; n < 9600; n += later == 0 ? 4 : kBlock) {
            const Stereo block = rig.Silence(later == 0 ? 4 : kBlock);
            for (size_t c = 0; c < 2; ++c)
                held[later][c].insert(held[later][c].end(), block[c].begin(), block[c].end());
        }
    }
    EXPECT_GT(EnergyOf(held[0], 0, 9600), 1.0);
    EXPECT_EQ(held[0], held[1]);
}

TEST(DattorroCoreTest, ANewRateStartsAfresh) {
    Rig rig, fresh(96000.0f);
    rig.RunMono(test::Noise(1, 48000));
    rig.module.Setup(96000.0f, kBlock);
    const Channel in = test::Noise(2, 48000);
    EXPECT_EQ(rig.RunMono(in), fresh.RunMono(in));
}

}  // namespace
}  // namespace Quorvan::dsp
