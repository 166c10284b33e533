// The whole stage of one block, wired as the processor wires it: follower, three functions and a
// sequencer, bipolar and scaled, two macros, and the matrix that joins them.
// Aim: at most 0.5 % of a core, 104 ns a frame, with 40 cells in use.
#include <algorithm>

#include "modulation/Sources.h"
#include "primitives/SmootherLPF.h"

namespace Quorvan::bench {
namespace {

class Stage {
public:
    explicit Stage(uint32_t cells) : matrix(MakeMatrix()) {
        matrix.Setup(kRate, kFrames);
        for (Function& function : functions)
            Draw(function, 4, true);
        Fill(sequencer, true);
        SetUpFollower();
        scale.WriteNormalized(0.8f, false);
        // Rows 26 to 34 are those of the sources themselves: the first of the cells move all of
        // them.
        for (uint32_t k = 0; k < cells; ++k)
            matrix.SetAmount((26 + k) % 95 * 7 + k % 7, 0.05f);
    }

    void Run() {
        std::fill_n(matrix.GetSourceRow(5), kFrames, 0.3f);
        std::fill_n(matrix.GetSourceRow(6), kFrames, 0.6f);
        RunFollower();
        for (uint32_t k = 0; k < 3; ++k) {
            float* rows[] = {matrix.GetDestinationRow(27 + k), matrix.GetDestinationRow(30 + k)};
            RunSource(functions[k], rows, 2, 1 + k);
            matrix.SourceUpdated(1 + k, kFrames);
        }
        RunSequencer();
        dsp::ProcessBlock block = song.Block();
        matrix.Process(block);
        song.GoOn();
    }

private:
    void SetUpFollower() {
        using E = dsp::EnvFollower;
        follower.Setup(kRate, kFrames);
        follower.SetParameterValue(E::StereoInput, 1.0f);
        follower.SetParameterValue(E::RMSWindowDurationMs, 0.0f);
        follower.SetParameterValue(E::FixedLinearGain, 1.0f);
        follower.SetParameterValue(E::Attack, 0.01f);
        follower.SetParameterValue(E::Release, 0.3f);
        envelopeGain.sampleRate = double{kRate};
        envelopeGain.UpdateCoefficients();
    }
    void RunFollower() {
        float* const* heard = noise.Next();
        envelopeGain.SetTarget(
            song.beat - static_cast<double>(static_cast<int>(song.beat)) < 0.5 ? 1.0f : 1.1f);
        envelopeGain.FillBlock(ramp.data(), kFrames);
        for (uint32_t c = 0; c < 2; ++c)
            for (uint32_t i = 0; i < kFrames; ++i)
                stage[c][i] = ramp[i] * heard[c][i];
        float* inputs[] = {stage[0].data(), stage[1].data()};
        RunSource(follower, inputs, 2, 0);
        matrix.SourceUpdated(0, kFrames);
        std::copy_n(heard[0], kFrames, aux[0].data());
        std::copy_n(matrix.GetSourceRow(0), kFrames, aux[1].data());
    }
    void RunSequencer() {
        float* rate[] = {matrix.GetDestinationRow(33)};
        float* const source = matrix.GetSourceRow(4);
        RunSource(sequencer, rate, 1, 4);
        for (uint32_t i = 0; i < kFrames; ++i)
            source[i] = 2.0f * source[i] - 1.0f;
        const float* const row = matrix.GetDestinationRow(34);
        const float position = scale.GetNormalized();
        for (uint32_t i = 0; i < kFrames; ++i)
            ramp[i] = std::clamp(row[i] + position, 0.0f, 1.0f);
        scale.MapPositions(ramp.data(), kFrames);
        for (uint32_t i = 0; i < kFrames; ++i)
            source[i] *= ramp[i];
        matrix.SourceUpdated(4, kFrames);
    }
    void RunSource(dsp::Module& module, float** inputs, uint32_t count, uint32_t source) {
        float* output = matrix.GetSourceRow(source);
        dsp::ProcessBlock block = song.Block();
        block.inputs = inputs;
        block.numInputs = count;
        block.outputs = &output;
        block.numOutputs = 1;
        module.Process(block);
    }

    using Row = std::array<float, kFrames>;

    Matrix matrix;
    std::array<Function, 3> functions{Function("Function1"), Function("Function2"),
                                      Function("Function3")};
    dsp::StepSequencer sequencer{"StepSeq"};
    dsp::EnvFollower follower{"EnvFollower"};
    dsp::SmootherLPF envelopeGain{0.01};
    dsp::Parameter scale =
        dsp::Parameter::MakeContinuous("", dsp::PotardKind::kLinear, 0.0f, 1.0f, 0.5f);
    NoiseInput noise;
    Song song;
    Row ramp{};
    std::array<Row, 2> stage{}, aux{};
};

void BM_ModulationStage(benchmark::State& state) {
    Stage stage(static_cast<uint32_t>(state.range(0)));
    for (auto _ : state) {
        stage.Run();
        benchmark::ClobberMemory();
    }
    CountFrames(state);
}
BENCHMARK(BM_ModulationStage)->ArgName("cells")->Arg(0)->Arg(40)->Arg(665);

}  // namespace
}  // namespace Quorvan::bench
