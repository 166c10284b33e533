#include "effects/Delay.h"

#include "EffectLoop.h"

// The counter "frame" is the time for one stereo frame.
namespace Quorvan {
namespace {

using dsp::Delay;

struct Echo : test::EffectLoop<Delay> {
    explicit Echo(int64_t stereoMode) : EffectLoop("Delay") {
        effect.SetParameterValue(Delay::StereoMode, static_cast<float>(stereoMode));
        effect.SetParameterValue(Delay::DelayTimeMs, 330.0f);
        effect.SetParameterValue(Delay::Feedback, 0.6f);
        effect.SetParameterValue(Delay::Wet, 0.4f);
        effect.SetParameterValue(Delay::HPFreq, 150.0f);
        effect.SetParameterNormalized(Delay::LPFreq, 0.9f);
        effect.SetParameterValue(Delay::StereoWidth, 0.05f);
        effect.SetParameterValue(Delay::StereoWidthPP, 0.5f);
        effect.Reset(false);
    }
};

void BM_DelayAtRest(benchmark::State& state) {
    Echo echo(state.range(0));
    echo.Settle(3.0);
    echo.Measure(state);
}
BENCHMARK(BM_DelayAtRest)->ArgName("pingPong")->Arg(0)->Arg(1);

/// All rows move all the time: every smoother glides and both filters are worked out every block.
void BM_DelayMoving(benchmark::State& state) {
    Echo echo(state.range(0));
    for (uint32_t channel = 2; channel <= 9; ++channel)
        echo.Move(channel, 0.1f, 0.3 * channel);
    echo.Settle(1.0);
    echo.Measure(state);
}
BENCHMARK(BM_DelayMoving)->ArgName("pingPong")->Arg(0)->Arg(1);

}  // namespace
}  // namespace Quorvan
