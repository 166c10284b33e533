#include "effects/SpaceEchoLite.h"

#include "EffectLoop.h"

// The counter "frame" is the time for one stereo frame.
namespace Quorvan {
namespace {

using dsp::SpaceEchoLite;

struct Echo : test::EffectLoop<SpaceEchoLite> {
    Echo(int64_t delayType, float delayMs) : EffectLoop("TapeEcho") {
        effect.SetParameterValue(SpaceEchoLite::DelayType, static_cast<float>(delayType));
        effect.SetParameterValue(SpaceEchoLite::DelayTime, delayMs);
        effect.SetParameterValue(SpaceEchoLite::DelayTimeFine, 0.0f);
        effect.SetParameterValue(SpaceEchoLite::InputVolume, 0.0f);
        effect.SetParameterValue(SpaceEchoLite::Intensity, 0.6f);
        effect.SetParameterValue(SpaceEchoLite::DryWet, 0.4f);
        effect.SetParameterValue(SpaceEchoLite::StereoWidth, 0.5f);
        effect.SetParameterValue(SpaceEchoLite::StereoWidthPP, 0.5f);
        effect.SetParameterValue(SpaceEchoLite::HPFreq, 150.0f);
        effect.SetParameterValue(SpaceEchoLite::ConfInGainCompensated, -24.3f);
        effect.Reset(false);
    }
};

void BM_SpaceEchoLiteAtRest(benchmark::State& state) {
    Echo echo(state.range(0), 330.0f);
    echo.Settle(8.0);
    echo.Measure(state);
}
BENCHMARK(BM_SpaceEchoLiteAtRest)->ArgName("pingPong")->Arg(0)->Arg(1);

/// Around 110 ms, where the filters of the head follow every sample of the motor's way.
void BM_SpaceEchoLiteMoving(benchmark::State& state) {
    Echo echo(state.range(0), 110.0f);
    for (uint32_t channel = 2; channel <= 9; ++channel)
        echo.Move(channel, 0.05f, 0.3 * channel);
    echo.Settle(1.0);
    echo.Measure(state);
}
BENCHMARK(BM_SpaceEchoLiteMoving)->ArgName("pingPong")->Arg(0)->Arg(1);

}  // namespace
}  // namespace Quorvan
