#include "effects/OctaverDelay.h"

#include "EffectLoop.h"

// The counter "frame" is the time for one stereo frame.
namespace Quorvan {
namespace {

using dsp::OctaverDelay;

struct Octaver : test::EffectLoop<OctaverDelay> {
    explicit Octaver(int64_t mode) : EffectLoop("OctaverDelay") {
        effect.SetParameterValue(OctaverDelay::Mode, static_cast<float>(mode));
        effect.SetParameterValue(OctaverDelay::DelayTimeMs, 330.0f);
        effect.SetParameterValue(OctaverDelay::PitchShift, 7.0f);
        effect.SetParameterValue(OctaverDelay::Spray, 40.0f);
        effect.SetParameterValue(OctaverDelay::Feedback, 0.5f);
        effect.SetParameterValue(OctaverDelay::DryWet, 0.4f);
        effect.SetParameterValue(OctaverDelay::Window, 1.0f);
        effect.SetParameterValue(OctaverDelay::HPFreq, 150.0f);
        effect.SetParameterNormalized(OctaverDelay::LPFreq, 1.0f);
    }
};

void BM_OctaverDelayAtRest(benchmark::State& state) {
    Octaver octaver(state.range(0));
    octaver.effect.SetParameterValue(OctaverDelay::Detune, static_cast<float>(state.range(1)));
    octaver.Settle(8.0);
    octaver.Measure(state);
}
BENCHMARK(BM_OctaverDelayAtRest)->ArgNames({"mode", "detune"})->ArgsProduct({{0, 1, 2}, {0, 30}});

/// All rows move all the time, so that shift, delay, offset and detuning glide in every block.
void BM_OctaverDelayMoving(benchmark::State& state) {
    Octaver octaver(state.range(0));
    for (uint32_t channel = 2; channel <= 10; ++channel)
        octaver.Move(channel, 0.1f, 0.3 * channel);
    octaver.Settle(1.0);
    octaver.Measure(state);
}
BENCHMARK(BM_OctaverDelayMoving)->ArgName("mode")->Arg(0)->Arg(1)->Arg(2);

}  // namespace
}  // namespace Quorvan
