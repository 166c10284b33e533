#include "effects/Reverb.h"

#include "support/PlainReverb.h"

namespace Quorvan::dsp {
namespace {

using R = Reverb;
using Core = DattorroCore;

using Rig = EffectRig<R>;

void Jump(Rig& rig, Dice& dice) {
    struct Range {
        uint32_t id;
        float from, to;
        float share = 1.0f;  ///< how often it is drawn anew
    };
    const Range ranges[] = {{Core::Predelay, 0.0f, 0.05f, 0.5f},
                            {Core::Size, 0.1f, 1.9f, 0.3f},
                            {Core::InputDiffusion1, 0.0f, 0.9f},
                            {Core::InputDiffusion2, 0.0f, 0.9f},
                            {Core::Decay, 0.0f, 0.8f},
                            {Core::DecayDiffusion1, 0.0f, 0.9f},
                            {Core::DecayDiffusion2, 0.0f, 0.9f},
                            {Core::Damping, 0.0f, 1.0f},
                            {Core::Excursion, 0.0f, 1.0f},
                            {Core::OscillatorRate, 0.0f, 1.0f},
                            {Core::OscillatorSpread, 0.0f, 1.0f},
                            {R::LPBandWith, 100.0f, 20000.0f},
                            {R::HPBandWith, 30.0f, 3000.0f},
                            {R::Wet, 0.0f, 1.0f},
                            {R::EarlySize, 0.0f, 1.0f},
                            {R::EarlyMix, 0.0f, 1.0f},
                            {R::OutputGain, -20.0f, 6.0f},
                            {R::MSMix, 0.0f, 0.5f}};
    for (const Range& range : ranges)
        if (dice.Chance(range.share))
            rig.Set(range.id, dice.Between(range.from, range.to));
    for (const auto& [id, least] : {std::pair<uint32_t, float>{Core::Predelay, 0.0f},
                                    {Core::Size, 0.1f},
                                    {Core::Damping, 0.0f}})
        if (dice.Chance(0.1f))
            rig.Set(id, least);
    rig.Set(Core::Freeze, dice.Chance(0.15f) ? 1.0f : 0.0f);
    rig.Set(R::EarlyOn, dice.Chance(0.6f) ? 1.0f : 0.0f);
    rig.Set(R::InvertEarly, dice.Chance(0.5f) ? 1.0f : 0.0f);
    for (const uint32_t id : {uint32_t{Core::SmoothTimeDelay}, uint32_t{R::SmoothTimeDelayCont}})
        rig.Set(id, dice.Chance(0.2f) ? 0.0f : dice.Between(0.01f, 0.1f));
}

TEST(ReverbTest, MatchesAPlainModelWhileEverythingMoves) {
    ExpectAlike<Rig, PlainReverb>(2400, 1.0e-5f, [](auto& pair, uint32_t number) {
        pair.mayLackRight = false;
        if (number % 40 == 0) {
            Jump(pair.rig, pair.dice);
            for (uint32_t row = 2; row < 10 && number >= 900; ++row)
                pair.Modulate(row, (row == 9 ? 5.0f : 1.0f) * pair.dice.Between(-0.3f, 0.3f));
        }
        if (number % 600 == 430)
            pair.Reset(number % 1200 == 430);
    });
}

TEST(ReverbTest, LowAndUnusableRatesStayStable) {
    const Stereo in{Noise(1, 24000), Noise(2, 24000)};
    for (const float rate : {-1.0f, 0.0f, 8000.0f, 10001.0f, 22050.0f}) {
        ModuleRig<R> rig(rate, 48, "");
        rig.module.SetParameterValue(Core::Predelay, 0.2f);
        rig.module.SetParameterValue(Core::Size, 0.1f);
        rig.module.SetParameterValue(R::EarlyOn, 1.0f);
        rig.module.SetParameterValue(R::EarlyMix, 0.5f);
        const float peak = PeakOf(rig.Run(in));
        EXPECT_GT(peak, 0.1f) << rate;
        EXPECT_LT(peak, 5.0f) << rate;
    }
}

TEST(ReverbTest, ThePlateRunsAtItsReferenceRateBelowItAndStartsAfreshAtANewOne) {
    ModuleRig<Core> low(8000.0f, 48, ""), reference(29761.0f, 48, "");
    for (auto* rig : {&low, &reference}) {
        rig->module.SetParameterValue(Core::Predelay, 0.01f);
        rig->module.Reset(true);
    }
    const Channel in = Noise(1, 9600);
    EXPECT_EQ(low.RunMono(in), reference.RunMono(in));
    ModuleRig<Core> fresh(96000.0f, 48, "");
    fresh.module.SetParameterValue(Core::Predelay, 0.01f);
    for (auto* rig : {&low, &fresh})
        rig->module.Setup(96000.0f, 48);
    EXPECT_EQ(low.RunMono(in), fresh.RunMono(in));
}

}  // namespace
}  // namespace Quorvan::dsp
