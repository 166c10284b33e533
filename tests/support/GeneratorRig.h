#pragma once

#include "framework/ProcessBlock.h"
#include "support/Test.h"

namespace Quorvan::test {

/// Runs one generator under a transport that the test moves by hand, and keeps what every step
/// gave. While it plays, the song position runs on by itself with the tempo.
template <class G>
class GeneratorRig {
public:
    template <class... Arguments>
    GeneratorRig(float sampleRate, uint32_t blockFrames, Arguments&&... arguments)
        : module(std::forward<Arguments>(arguments)...), rate(sampleRate), blockSize(blockFrames) {
        module.Setup(rate, blockSize);
        rows.resize(module.NumInputs());
    }

    void Set(uint32_t id, float value) { module.SetParameterValue(id, value); }
    /// Gives the row of an input a constant content, and makes it active.
    void Modulate(uint32_t input, float amount) {
        rows[input].assign(dsp::kRowHeadFloats + blockSize, amount);
        rows[input][dsp::kRowHeadFloats - 1] = dsp::kRowActive;
    }
    float* Row(uint32_t input) { return rows[input].data() + dsp::kRowHeadFloats; }

    void Block(uint32_t frames = 0) {
        frames = frames == 0 ? blockSize : frames;
        std::vector<float*> inputs;
        for (auto& row : rows)
            inputs.push_back(row.empty() ? nullptr : row.data() + dsp::kRowHeadFloats);
        std::vector<float> heard(2 * frames, 99.0f);
        std::array<float*, 2> channels{heard.data(), heard.data() + frames};
        dsp::ProcessBlock block;
        block.inputs = inputs.data();
        block.outputs = channels.data();
        block.numInputs = static_cast<uint32_t>(inputs.size());
        block.numOutputs = module.NumOutputs();
        block.numFrames = frames;
        block.tempo = tempo;
        block.songPosition = static_cast<float>(position);
        block.transportPlaying = playing ? 1 : 0;
        module.Process(block);
        const uint32_t steps = module.Value(G::ControlRate) >= 0.5f ? 1 : frames;
        Keep(phases, module.PhaseBuffer(), steps);
        Keep(ticks, module.TickBuffer(), steps);
        Keep(cycles, module.CycleBuffer(), steps);
        for (uint32_t c = 0; c < block.numOutputs; ++c)
            Keep(outputs[c], channels[c], steps);
        if (playing)
            position += frames * double{tempo} / 60.0 / rate;
    }
    void Blocks(uint32_t count) {
        for (uint32_t i = 0; i < count; ++i)
            Block();
    }
    void Forget() {
        for (auto* kept : {&phases, &ticks, &cycles, &outputs[0], &outputs[1]})
            kept->clear();
    }
    /// Numbers of the steps that have a tick.
    std::vector<uint32_t> TickSteps() const {
        std::vector<uint32_t> steps;
        for (uint32_t i = 0; i < ticks.size(); ++i)
            if (ticks[i] > 0.5f)
                steps.push_back(i);
        return steps;
    }

    G module;
    float tempo = 120.0f;
    double position = 0.0;  ///< quarter notes
    bool playing = false;

    // One entry a step since construction or Forget.
    std::vector<float> phases, ticks, cycles;
    std::array<std::vector<float>, 2> outputs;

private:
    static void Keep(std::vector<float>& kept, const float* from, uint32_t steps) {
        kept.insert(kept.end(), from, from + steps);
    }

    float rate;
    uint32_t blockSize;
    std::vector<std::vector<float>> rows;  ///< head and samples of each row in use
};

}  // namespace Quorvan::test
