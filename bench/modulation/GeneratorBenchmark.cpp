// Each source of modulation by itself, for one block.
#include "modulation/Sources.h"

namespace Quorvan::bench {
namespace {

/// Runs a generator whose rows nothing reaches.
template <class Generator>
void RunGenerator(benchmark::State& state, Generator& generator) {
    Song song;
    std::vector<float> idle(dsp::kRowHeadFloats + kFrames, 0.0f);
    std::array<float*, 3> inputs;
    inputs.fill(idle.data() + dsp::kRowHeadFloats);
    std::array<std::vector<float>, 2> heard{std::vector<float>(kFrames),
                                            std::vector<float>(kFrames)};
    std::array<float*, 2> outputs{heard[0].data(), heard[1].data()};
    for (auto _ : state) {
        dsp::ProcessBlock block = song.Block();
        block.inputs = inputs.data();
        block.numInputs = generator.NumInputs();
        block.outputs = outputs.data();
        block.numOutputs = generator.NumOutputs();
        generator.Process(block);
        song.GoOn();
        benchmark::ClobberMemory();
    }
    CountFrames(state);
}

void BM_FunctionGenerator(benchmark::State& state) {
    Function function("Function1");
    Draw(function, static_cast<uint32_t>(state.range(0)), state.range(1) != 0);
    RunGenerator(state, function);
}
BENCHMARK(BM_FunctionGenerator)
    ->ArgNames({"points", "synced"})
    ->Args({3, 0})
    ->Args({3, 1})
    ->Args({16, 1})
    ->Args({64, 1});

void BM_StepSequencer(benchmark::State& state) {
    dsp::StepSequencer sequencer("StepSeq");
    Fill(sequencer, state.range(0) != 0);
    RunGenerator(state, sequencer);
}
BENCHMARK(BM_StepSequencer)->ArgName("glide")->Arg(0)->Arg(1);

void BM_LFO(benchmark::State& state) {
    dsp::LFO lfo("LFO");
    lfo.Setup(kRate, kFrames);
    lfo.SetParameterValue(dsp::LFO::Mode, 2.0f);
    lfo.SetParameterValue(dsp::LFO::Waveform, static_cast<float>(state.range(0)));
    lfo.SetParameterValue(dsp::LFO::Amp, 1.0f);
    lfo.SetParameterValue(dsp::LFO::Stereo, 1.0f);
    RunGenerator(state, lfo);
}
BENCHMARK(BM_LFO)
    ->ArgName("waveform")
    ->Arg(dsp::LFO::kSine)
    ->Arg(dsp::LFO::kTriangle)
    ->Arg(dsp::LFO::kSampleAndHold);

void BM_EnvFollower(benchmark::State& state) {
    using E = dsp::EnvFollower;
    E follower("EnvFollower");
    follower.Setup(kRate, kFrames);
    follower.SetParameterValue(E::StereoInput, 1.0f);
    follower.SetParameterValue(E::RMSWindowDurationMs, static_cast<float>(state.range(0)));
    follower.SetParameterValue(E::FixedLinearGain, 1.0f);
    follower.SetParameterValue(E::Attack, 0.01f);
    follower.SetParameterValue(E::Release, 0.3f);
    NoiseInput noise;
    std::vector<float> heard(kFrames);
    float* output = heard.data();
    for (auto _ : state) {
        dsp::ProcessBlock block = Song().Block();
        block.inputs = const_cast<float**>(noise.Next());
        block.numInputs = 2;
        block.outputs = &output;
        block.numOutputs = 1;
        follower.Process(block);
        benchmark::ClobberMemory();
    }
    CountFrames(state);
}
BENCHMARK(BM_EnvFollower)->ArgName("windowMs")->Arg(0)->Arg(10);

}  // namespace
}  // namespace Quorvan::bench
