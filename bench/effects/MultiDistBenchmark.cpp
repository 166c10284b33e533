#include "effects/MultiDist.h"

#include "EffectLoop.h"

// The counter "frame" is the time for one stereo frame.
namespace Quorvan {
namespace {

using dsp::MultiDist;

void BM_Distortion(benchmark::State& state) {
    test::EffectLoop<MultiDist> distortion("MultiDist");
    distortion.effect.SetParameterNormalized(MultiDist::Stereo, 1.0f);
    distortion.effect.SetParameterNormalized(MultiDist::DistType,
                                             static_cast<float>(state.range(0)) / 12.0f);
    distortion.effect.SetParameterNormalized(MultiDist::Drive, 0.5f);
    distortion.Move(2, 0.1f, 2.0);
    distortion.Settle(0.5);
    distortion.Measure(state);
}
BENCHMARK(BM_Distortion)->ArgName("curve")->DenseRange(0, 12);

}  // namespace
}  // namespace Quorvan
