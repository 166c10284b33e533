#include "effects/OctaverDelay.h"

#include "support/SideBySide.h"

namespace Quorvan::dsp {
namespace {

using O = OctaverDelay;
using Rig = EffectRig<O>;

/// What two plain pitch shifters give that are wired as the effect has them, sample by sample.
const std::map<float, std::vector<double>> kPrint{
    {44100.0f,
     {0.07215,  0.26842,  0.00635,  -0.05141, 0.20840,  0.07166,  0.07252,  -0.02798, 0.13565,
      0.06340,  0.01125,  0.03015,  -0.03408, 0.02312,  -0.04053, 0.00539,  -0.30645, 0.01733,
      -0.03488, -0.01550, -0.01134, -0.09128, 0.02140,  0.00060,  -0.12365, 0.11331,  0.00630,
      0.00793,  -0.26214, 0.03680,  -0.08928, 0.01222,  0.26940,  0.08128,  0.02117,  -0.00154,
      -0.07665, 0.01743,  0.02456,  0.07154,  -0.18667, -0.22105, -0.01243, 0.00505,  0.19597,
      -0.04757, -0.02088, -0.05920, -0.07314, 0.04285,  -0.00007, -0.00882, -0.02789, -0.03082,
      0.00716,  -0.00777, -0.06453, 0.19068,  -0.00045, -0.00200}},
    {96000.0f,
     {-0.06693, 0.20920,  0.04015,  0.00988,  0.02931,  0.17516,  0.09208,  -0.01656, -0.02854,
      0.12246,  0.03082,  -0.00254, 0.15866,  0.12419,  0.12585,  -0.08272, -0.51565, 0.22283,
      0.03105,  -0.01310, 0.12224,  0.01712,  0.10950,  -0.04389, -0.32534, -0.12210, 0.01961,
      0.00577,  -0.26834, -0.03074, -0.01382, 0.03802,  0.36653,  0.25699,  0.00519,  -0.00041,
      -0.03455, 0.16080,  -0.01324, 0.00971,  0.00906,  -0.33242, -0.00761, 0.00631,  0.10062,
      0.32272,  -0.08024, -0.06752, -0.16847, 0.28750,  0.05976,  0.00036,  -0.04287, 0.03355,
      -0.01401, -0.00786, 0.01564,  -0.00000, -0.00236, 0.00138}}};

TEST(OctaverDelayTest, SoundsAsAPlainModelWhileEverythingMoves) {
    ExpectPrint<Rig>(kPrint, [](auto& solo, uint32_t number) {
        Rig& rig = solo.rig;
        Dice& dice = solo.dice;
        if (number == 0) {
            rig.Set(O::LPFreq, 12000.0f);
            rig.Set(O::HPFreq, 200.0f);
        }
        for (uint32_t id = O::Mode; id < O::kParameterCount; ++id) {
            if (!dice.Chance(id <= O::Stereo ? 0.003f : 0.01f))
                continue;
            // Delays short enough to go round, and no low high-passes, which make much of the last
            // digit.
            if (id == O::DelayTimeMs)
                rig.Set(id, dice.Between(1.0f, 65.0f));
            else if (id == O::DelayTimeSynced)
                rig.Set(id, static_cast<float>(dice.Below(3)));
            else if (id == O::PitchShift && dice.Chance(0.3f))
                rig.Set(id, dice.Chance(0.5f) ? 0.0f : dice.Between(-0.2f, 0.2f));
            else
                rig.SetPosition(id, dice.Between(id == O::HPFreq ? 0.35f : 0.0f,
                                                 id == O::Feedback ? 0.7f : 1.0f));
        }
        for (uint32_t channel = 2; number > 500 && channel < 11; ++channel)
            if (dice.Chance(0.003f))
                solo.Modulate(channel, dice.Between(0.02f, 0.12f));
        if (number % 1000 == 600)
            solo.Reset(number == 600);
    });
}

// At 120 beats a minute. The straight note is held to 4 s, then all to what the line takes.
TEST(OctaverDelayTest, SyncedTimeFollowsTempoNoteAndType) {
    for (const auto& [note, type, seconds] : {std::tuple{3.0f, 0.0f, 0.5},
                                              {3.0f, 1.0f, 0.33333},
                                              {3.0f, 2.0f, 0.75},
                                              {8.0f, 0.0f, 4.0},
                                              {8.0f, 1.0f, 2.66667},
                                              {7.0f, 2.0f, 4.02}}) {
        Rig rig;
        for (const auto& [id, value] : {std::pair{O::DryWet, 1.0f},
                                        {O::LPFreq, 20000.0f},
                                        {O::PitchShift, 0.0f},
                                        {O::DelayOffset, 0.0f},
                                        {O::Detune, 0.0f},
                                        {O::DelayTimeSynced, note},
                                        {O::MidiSync, 0.5f},
                                        {O::RateSyncedType, type}})
            rig.Set(id, value);
        EXPECT_NEAR(EchoSeconds(rig)[0], seconds, 5.0e-5) << note << ' ' << type;
    }
}

}  // namespace
}  // namespace Quorvan::dsp
