#include "effects/MultiModeFilter.h"

#include "EffectLoop.h"

// The counter "frame" is the time for one stereo frame.
namespace Quorvan {
namespace {

using dsp::MultiModeFilter;

struct Filter : test::EffectLoop<MultiModeFilter> {
    explicit Filter(int64_t mode) : EffectLoop("MultiModeFilter") {
        effect.SetParameterValue(MultiModeFilter::Wet, 1.0f);
        effect.SetParameterValue(MultiModeFilter::Mode, static_cast<float>(mode));
        effect.SetParameterNormalized(MultiModeFilter::Freq, 0.5f);
        effect.SetParameterNormalized(MultiModeFilter::CombFreq, 0.5f);
        effect.SetParameterNormalized(MultiModeFilter::Q, 0.3f);
        effect.SetParameterNormalized(MultiModeFilter::Slope, 1.0f);
        effect.Reset(false);
    }
};

void BM_FilterAtRest(benchmark::State& state) {
    Filter filter(state.range(0));
    filter.Settle(1.0);
    filter.Measure(state);
}
BENCHMARK(BM_FilterAtRest)->ArgName("mode")->DenseRange(0, 4);

void BM_FilterMoving(benchmark::State& state) {
    Filter filter(state.range(0));
    for (uint32_t channel = 2; channel <= 4; ++channel)
        filter.Move(channel, 0.1f, 0.7 * channel);
    filter.Settle(1.0);
    filter.Measure(state);
}
BENCHMARK(BM_FilterMoving)->ArgName("mode")->DenseRange(0, 4);

}  // namespace
}  // namespace Quorvan
