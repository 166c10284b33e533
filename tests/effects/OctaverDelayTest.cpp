#include "effects/OctaverDelay.h"

#include "support/PlainPitchShift.h"
#include "support/SideBySide.h"

namespace Quorvan::dsp {
namespace {

using O = OctaverDelay;
using Rig = EffectRig<O>;

/// Two plain pitch shifters, wired as the effect has them.
class Plain {
public:
    Plain(O& source, float rate, uint32_t frames, const SeededClock& = SeededClock(1))
        : knobs(source),
          stages{PlainPitchShift(knobs, rate, frames, prims::SeedFromClock()),
                 PlainPitchShift(knobs, rate, frames, prims::SeedFromClock())},
          silence{Channel(frames), Channel(frames)} {
        wet.rampSteps = loop.rampSteps = frames;
        SetUp({&wet, &loop}, rate, 1);
    }

    void Reset(bool) {
        for (auto& stage : stages)
            stage.Reset();
        back = silence;
        due = true;
    }

    Stereo Run(const Stereo& input, bool hasRight) {
        const Stereo in{input[0], input[hasRight ? 1 : 0]};
        mode = static_cast<int>(knobs.Get(O::Mode));
        if (const float position = knobs.Position(O::Mode);
            position != std::exchange(modePosition, position))
            Reset(false);
        const float feedback = knobs.Get(O::Feedback, 4), mix = 2.0f * knobs.Get(O::DryWet, 2);
        Channel loopGain(silence[0].size()), wetGain(silence[0].size());
        loop.SetTarget(mode == 0 ? 0.0f : feedback);
        loop.FillBlock(loopGain.data(), static_cast<uint32_t>(loopGain.size()));
        if (std::exchange(due, false)) {
            wet.Reset(mix);
            loop.Reset(feedback);
        }
        wet.SetTarget(mix);
        wet.FillBlock(wetGain.data(), static_cast<uint32_t>(wetGain.size()));

        Stereo send = in, out = in;
        for (size_t c = 0; c < 2; ++c)
            for (size_t n = 0; n < in[c].size(); ++n)
                send[c][n] = back[c][n] * loopGain[n] + in[c][n];
        const Stereo first = RunStage(0, mode == 0 ? feedback : 0.0f, send);
        for (size_t c = 0; c < 2; ++c)
            for (size_t n = 0; n < in[c].size(); ++n)
                send[c][n] = first[c][n] * loopGain[n];
        const Stereo second = mode != 0 ? RunStage(1, 0.0f, send) : silence;
        back = silence;  // behind a short block nothing comes back
        for (size_t c = 0; c < 2; ++c) {
            for (size_t n = 0; n < in[c].size(); ++n) {
                back[c][n] = second[c][n];
                out[c][n] = (second[c][n] + first[c][n]) * std::min(wetGain[n], 1.0f) +
                            in[c][n] * std::clamp(2.0f - wetGain[n], 0.0f, 1.0f);
            }
        }
        return out;
    }

    PlainKnobs<O> knobs;

private:
    Stereo RunStage(size_t stage, float feedback, const Stereo& in) {
        const float shift = knobs.Get(O::PitchShift, 7), detune = knobs.Get(O::Detune, 10);
        const float partner = mode == 0 ? shift : mode == 1 ? 12.0f - shift : -12.0f - shift;
        if (stage == 0)
            return stages[0].Run({feedback, shift, detune}, in);
        return stages[1].Run({feedback, partner, -detune}, in);
    }

    int mode = 0;
    float modePosition = -1.0f;
    bool due = true;
    std::array<PlainPitchShift, 2> stages;
    Stereo silence, back = silence;  ///< back: the second stage's last output
    SmootherInterpLPF wet{0.01}, loop{0.05};
};

TEST(OctaverDelayTest, MatchesAPlainModelWhileEverythingMoves) {
    ExpectAlike<Rig, Plain>(3000, 3.0e-5f, [](auto& pair, uint32_t number) {
        Rig& rig = pair.rig;
        Dice& dice = pair.dice;
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
                pair.Modulate(channel, dice.Between(0.02f, 0.12f));
        if (number % 1000 == 600)
            pair.Reset(number == 600);
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
