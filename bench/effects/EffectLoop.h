#pragma once

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

#include "framework/ProcessBlock.h"
#include "support/TestSignals.h"

namespace Quorvan::test {

/// Runs one effect over seeded noise in blocks of a millisecond at 48 kHz, with modulation rows
/// that may move from block to block.
template <class Effect>
class EffectLoop {
public:
    static constexpr uint32_t kFrames = 48;
    static constexpr float kRate = 48000.0f;

    explicit EffectLoop(const char* name)
        : effect(name), rows(effect.NumInputs()), inputs(effect.NumInputs(), nullptr) {
        effect.Setup(kRate, kFrames);
        for (uint32_t c = 0; c < 2; ++c) {
            noise[c] = Noise(c + 1, kNoiseBlocks * kFrames, 0.25f);
            output[c].resize(kFrames);
            outputs[c] = output[c].data();
        }
    }

    /// The row of a channel swings by depth around 0, rate times a second.
    void Move(uint32_t channel, float depth, double rate) {
        rows[channel] = {depth, rate, std::vector<float>(dsp::kRowHeadFloats + kFrames, 0.0f)};
        rows[channel].samples[dsp::kRowHeadFloats - 1] = dsp::kRowActive;
        inputs[channel] = rows[channel].samples.data() + dsp::kRowHeadFloats;
    }

    /// seconds of signal ahead of the measurement, so that every glide has had its time.
    void Settle(double seconds) {
        for (double t = 0.0; t < seconds; t += kFrames / double{kRate})
            Step();
    }

    void Step() {
        const size_t at = blocks % kNoiseBlocks * kFrames;
        for (uint32_t c = 0; c < 2; ++c)
            inputs[c] = noise[c].data() + at;
        const double time = static_cast<double>(blocks) * kFrames / double{kRate};
        for (Row& row : rows)
            if (!row.samples.empty())
                row.samples[dsp::kRowHeadFloats] =
                    row.depth *
                    static_cast<float>(std::sin(2.0 * std::numbers::pi * row.rate * time));
        ++blocks;
        dsp::ProcessBlock block;
        block.inputs = inputs.data();
        block.outputs = outputs.data();
        block.numInputs = effect.NumInputs();
        block.numOutputs = 2;
        block.numFrames = kFrames;
        block.tempo = 120.0f;
        effect.Process(block);
    }

    void Measure(benchmark::State& state) {
        Measure(state, [] {});
    }
    /// With a call ahead of each block, which may write parameters.
    template <class Ahead>
    void Measure(benchmark::State& state, Ahead ahead) {
        for (auto _ : state) {
            ahead();
            Step();
            benchmark::DoNotOptimize(outputs[0]);
            benchmark::ClobberMemory();
        }
        const double frames = static_cast<double>(state.iterations()) * kFrames;
        state.SetItemsProcessed(static_cast<int64_t>(frames));
        state.counters["frame"] =
            benchmark::Counter(frames, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    }

    Effect effect;

private:
    static constexpr size_t kNoiseBlocks = 1000;

    struct Row {
        float depth = 0.0f;
        double rate = 0.0;
        std::vector<float> samples;  ///< head and samples, of which only the first is read
    };

    uint64_t blocks = 0;
    std::array<std::vector<float>, 2> noise, output;
    std::vector<Row> rows;
    std::vector<float*> inputs;
    std::array<float*, 2> outputs{};
};

}  // namespace Quorvan::test
