#include "effects/Compressor.h"

#include "EffectLoop.h"
#include "effects/Limiter.h"

// The counter "frame" is the time for one stereo frame.
namespace Quorvan {
namespace {

using dsp::Compressor;

void BM_Limiter(benchmark::State& state) {
    test::EffectLoop<dsp::Limiter> limiter("Limiter");
    // Noise ahead of it has a peak of -12 dB: 18 dB of drive keep it at work.
    limiter.effect.SetParameterValue(Compressor::InputGain, static_cast<float>(state.range(0)));
    limiter.Settle(0.5);
    limiter.Measure(state);
}
BENCHMARK(BM_Limiter)->ArgName("driveDb")->Arg(0)->Arg(18);

void RunCompressor(benchmark::State& state, bool moves) {
    test::EffectLoop<Compressor> compressor("Compressor");
    compressor.effect.SetParameterValue(Compressor::Wet, 1.0f);
    compressor.effect.SetParameterValue(Compressor::OutputGain, 0.0f);
    compressor.effect.SetParameterValue(Compressor::Threshold, -30.0f);
    compressor.effect.SetParameterValue(Compressor::Ratio, 4.0f);
    compressor.effect.SetParameterNormalized(Compressor::StereoMode,
                                             static_cast<float>(state.range(0)));
    for (uint32_t channel = 2; moves && channel < compressor.effect.NumInputs(); ++channel)
        compressor.Move(channel, 0.1f, 1.0 + 0.3 * channel);
    compressor.Settle(0.5);
    compressor.Measure(state);
}
void BM_CompressorAtRest(benchmark::State& state) { RunCompressor(state, false); }
void BM_CompressorMoving(benchmark::State& state) { RunCompressor(state, true); }
BENCHMARK(BM_CompressorAtRest)->ArgName("linked")->Arg(0)->Arg(1);
BENCHMARK(BM_CompressorMoving)->ArgName("linked")->Arg(0)->Arg(1);

}  // namespace
}  // namespace Quorvan
