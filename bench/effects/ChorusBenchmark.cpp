#include "effects/Chorus.h"

#include "EffectLoop.h"

// The counter "frame" is the time for one stereo frame.
namespace Quorvan {
namespace {

using dsp::Chorus;

struct Ensemble : test::EffectLoop<Chorus> {
    explicit Ensemble(int64_t voices) : EffectLoop("Chorus") {
        effect.SetParameterValue(Chorus::Voices, static_cast<float>(voices));
        effect.SetParameterValue(Chorus::StereoMode, 1.0f);
        effect.SetParameterValue(Chorus::Feedback, 0.4f);
        effect.SetParameterValue(Chorus::LPFfc, 10000.0f);
        effect.SetParameterValue(Chorus::HPFfc, 100.0f);
        effect.SetParameterNormalized(Chorus::LPFOn, 1.0f);
        effect.SetParameterNormalized(Chorus::HPFOn, 1.0f);
        effect.Reset(false);
    }
};

/// The oscillators run, all else rests.
void BM_ChorusAtRest(benchmark::State& state) {
    Ensemble chorus(state.range(0));
    chorus.Settle(2.0);
    chorus.Measure(state);
}
BENCHMARK(BM_ChorusAtRest)->ArgName("voices")->Arg(1)->Arg(2)->Arg(3);

/// Every row and every glide moves in every block.
void BM_ChorusMoving(benchmark::State& state) {
    Ensemble chorus(state.range(0));
    for (uint32_t channel = 2; channel <= 4; ++channel)
        chorus.Move(channel, 0.1f, 0.3 * channel);
    chorus.Settle(1.0);
    float turned = 0.0f;
    chorus.Measure(state, [&] {
        turned = turned < 1.0f ? turned + 0.003f : 0.0f;
        chorus.effect.SetParameterNormalized(Chorus::DelayMs, 0.2f + 0.5f * turned);
        chorus.effect.SetParameterNormalized(Chorus::Depth, 0.1f + 0.2f * turned);
        chorus.effect.SetParameterNormalized(Chorus::LPFfc, 0.5f + 0.4f * turned);
        chorus.effect.SetParameterNormalized(Chorus::HPFfc, 0.1f * turned);
    });
}
BENCHMARK(BM_ChorusMoving)->ArgName("voices")->Arg(1)->Arg(2)->Arg(3);

}  // namespace
}  // namespace Quorvan
