#include <string>

#include "effects/DigitalPPM.h"
#include "effects/EffectLoop.h"
#include "granular/BitCrusher.h"
#include "granular/GranularPhaseHelper.h"
#include "granular/MoteWeaver.h"
#include "granular/StepSequencerGranular.h"
#include "granular/TransientDetector.h"

// The small modules around the grains. The counter "frame" is the time for one frame.
namespace Quorvan {
namespace {

using benchmark::Counter;

constexpr uint32_t kFrames = 48;
constexpr float kRate = 48000.0f;

void CountFrames(benchmark::State& state) {
    const double frames = static_cast<double>(state.iterations()) * kFrames;
    state.counters["frame"] = Counter(frames, Counter::kIsRate | Counter::kInvert);
}

/// Recording, clocks and heads, with no grain: the trigger stays shut.
void BM_MoteWeaverRecords(benchmark::State& state) {
    namespace Id = dsp::MoteWeaverId;
    test::EffectLoop<dsp::MoteWeaver> granular("MoteWeaver");
    granular.effect.SetParameterNormalized(Id::TriggerMode, 1.0f);
    granular.effect.SetParameterNormalized(Id::PlaybackMode,
                                           0.5f * static_cast<float>(state.range(0)));
    granular.effect.SetParameterNormalized(Id::Speed, 0.75f);
    granular.Settle(1.0);
    granular.Measure(state);
}
BENCHMARK(BM_MoteWeaverRecords)->ArgName("playback")->DenseRange(0, 2);

void BM_BitCrusher(benchmark::State& state) {
    test::EffectLoop<dsp::BitCrusher> crusher("BitCrusher");
    crusher.effect.SetParameterNormalized(dsp::BitCrusher::Wet, 1.0f);
    crusher.effect.SetParameterValue(dsp::BitCrusher::Bitdepth, 12.1f);
    crusher.effect.SetParameterValue(dsp::BitCrusher::Downsample, 6.0f);
    crusher.Settle(0.1);
    crusher.Measure(state);
}
BENCHMARK(BM_BitCrusher);

/// A block's frame of the detection function, with its transform.
void BM_TransientDetector(benchmark::State& state) {
    dsp::TransientDetector detector;
    detector.Setup(kRate, kFrames);
    detector.Reset();
    const std::vector<float> noise = test::Noise(1, kFrames, 0.5f);
    for (auto _ : state) {
        detector.BeginBlock(0);
        for (uint32_t n = 0; n < kFrames; ++n)
            detector.PushSample(n, noise[n]);
        benchmark::DoNotOptimize(detector.EndBlock(0.5f));
    }
    CountFrames(state);
}
BENCHMARK(BM_TransientDetector);

template <class Module>
void RunModule(benchmark::State& state, Module& module, uint32_t inputCount, uint32_t outputCount) {
    module.Setup(kRate, kFrames);
    std::vector<float> in = test::Noise(1, kFrames, 0.5f);
    std::vector<float> out(kFrames);
    float* inputs[] = {in.data(), in.data()};
    float* outputs[] = {out.data()};
    dsp::ProcessBlock block;
    block.inputs = inputs;
    block.numInputs = inputCount;
    block.outputs = outputs;
    block.numOutputs = outputCount;
    block.numFrames = kFrames;
    block.tempo = 120.0f;
    for (auto _ : state) {
        module.Process(block);
        benchmark::ClobberMemory();
    }
    CountFrames(state);
}

void BM_GranularPhaseHelper(benchmark::State& state) {
    dsp::GranularPhaseHelper clock("Clock");
    clock.SetParameterNormalized(dsp::IGenerator::MidiSync, static_cast<float>(state.range(0)));
    RunModule(state, clock, 0, 0);
}
BENCHMARK(BM_GranularPhaseHelper)->ArgName("synced")->Arg(0)->Arg(1);

void BM_StepSequencerGranular(benchmark::State& state) {
    dsp::StepSequencerGranular sequencer("Sequencer");
    RunModule(state, sequencer, 0, 1);
}
BENCHMARK(BM_StepSequencerGranular);

void BM_DigitalPPM(benchmark::State& state) {
    dsp::DigitalPPM meter("Meter");
    RunModule(state, meter, 1, 0);
}
BENCHMARK(BM_DigitalPPM);

}  // namespace
}  // namespace Quorvan
