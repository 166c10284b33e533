#include "effects/MultiDist.h"

#include "EffectLoop.h"

// The counter "frame" is the time for one stereo frame.
namespace Quorvan {
namespace {

using dsp::MultiDist;

void RunDistortion(benchmark::State& state, bool moves) {
    test::EffectLoop<MultiDist> distortion("MultiDist");
    distortion.effect.SetParameterNormalized(MultiDist::Stereo, 1.0f);
    distortion.effect.SetParameterNormalized(MultiDist::DistType,
                                             static_cast<float>(state.range(0)) / 12.0f);
    distortion.effect.SetParameterNormalized(MultiDist::Drive, 0.5f);
    if (moves)
        distortion.Move(2, 0.1f, 2.0);
    distortion.Settle(0.5);
    distortion.Measure(state);
}
void BM_DistortionAtRest(benchmark::State& state) { RunDistortion(state, false); }
void BM_DistortionMoving(benchmark::State& state) { RunDistortion(state, true); }
BENCHMARK(BM_DistortionAtRest)->ArgName("curve")->DenseRange(0, 12);
BENCHMARK(BM_DistortionMoving)->ArgName("curve")->DenseRange(0, 12);

}  // namespace
}  // namespace Quorvan
