#include "effects/Flanger.h"

#include "EffectLoop.h"

// The counter "frame" is the time for one stereo frame.
namespace Quorvan {
namespace {

using dsp::Chorus;
using dsp::Flanger;

/// Sweeps with the ranges that the slot gives it.
struct Sweep : test::EffectLoop<Flanger> {
    Sweep() : EffectLoop("Flanger") {
        effect.Configure(Flanger::MinDelay, dsp::PotardKind::kLinear, 0.001f, 10.0f);
        effect.Configure(Flanger::DepthFlanger, dsp::PotardKind::kLinear, 0.0f, 10.0f);
        effect.SetParameterValue(Flanger::MinDelay, 0.5f);
        effect.SetParameterValue(Flanger::DepthFlanger, 2.0f);
        effect.SetParameterValue(Chorus::DryWet, 0.5f);
        effect.SetParameterValue(Chorus::Freq, 0.3f);
        effect.SetParameterValue(Chorus::StereoMode, 1.0f);
        effect.SetParameterValue(Chorus::Feedback, 0.6f);
        effect.SetParameterValue(Chorus::LPFfc, 9935.0f);
        effect.SetParameterValue(Chorus::HPFfc, 125.0f);
        effect.Reset(true);
    }
};

/// The oscillator runs, all else rests.
void BM_FlangerAtRest(benchmark::State& state) {
    Sweep flanger;
    flanger.Settle(2.0);
    flanger.Measure(state);
}
BENCHMARK(BM_FlangerAtRest);

/// Every row and both of its own parameters move in every block.
void BM_FlangerMoving(benchmark::State& state) {
    Sweep flanger;
    for (uint32_t channel = 2; channel <= 4; ++channel)
        flanger.Move(channel, 0.1f, 0.3 * channel);
    flanger.Settle(1.0);
    float turned = 0.0f;
    flanger.Measure(state, [&] {
        turned = turned < 1.0f ? turned + 0.003f : 0.0f;
        flanger.effect.SetParameterNormalized(Flanger::MinDelay, 0.5f * turned);
        flanger.effect.SetParameterNormalized(Flanger::DepthFlanger, 0.3f - 0.2f * turned);
    });
}
BENCHMARK(BM_FlangerMoving);

}  // namespace
}  // namespace Quorvan
