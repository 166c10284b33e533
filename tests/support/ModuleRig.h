#pragma once

#include "framework/ProcessBlock.h"
#include "support/TestSignals.h"

namespace Quorvan::test {

using Channel = std::vector<float>;
using Stereo = std::array<Channel, 2>;

inline Stereo Impulse(size_t length) {
    Stereo impulse{Channel(length), Channel(length)};
    impulse[0][0] = impulse[1][0] = 1.0f;
    return impulse;
}
inline float PeakOf(const Stereo& signal) {
    return std::max(PeakLevel(signal[0]), PeakLevel(signal[1]));
}

/// Runs one module over whole signals, cut into blocks as the processor cuts them. Signal lengths
/// are multiples of 4.
template <class M>
class ModuleRig {
public:
    template <class... Arguments>
    ModuleRig(float rate, uint32_t blockFrames, Arguments&&... arguments)
        : module(std::forward<Arguments>(arguments)...), blockSize(blockFrames) {
        module.Setup(rate, blockSize);
        rows.resize(module.NumInputs());
    }

    /// Gives the modulation row of an input channel a constant content, and makes it active.
    void Modulate(uint32_t channel, float amount) {
        rows[channel].assign(dsp::kRowHeadFloats + blockSize, amount);
        rows[channel][dsp::kRowHeadFloats - 1] = dsp::kRowActive;
    }

    /// The output for a stereo input; fill is what the outputs hold before.
    Stereo Run(const Stereo& input, float fill = 0.0f) {
        Stereo output{Channel(input[0].size(), fill), Channel(input[0].size(), fill)};
        RunBlocks({input[0].data(), input[1].data()}, output);
        return output;
    }
    /// The same with the right input missing.
    Stereo RunMono(const Channel& input, float fill = 0.0f) {
        Stereo output{Channel(input.size(), fill), Channel(input.size(), fill)};
        RunBlocks({input.data(), nullptr}, output);
        return output;
    }
    /// The same with the outputs on top of the inputs.
    void RunInPlace(Stereo& signal) { RunBlocks({signal[0].data(), signal[1].data()}, signal); }

    M module;
    float tempo = 120.0f;

private:
    void RunBlocks(std::array<const float*, 2> input, Stereo& output) {
        const auto length = static_cast<uint32_t>(output[0].size());
        std::vector<float*> inputs(std::max<size_t>(rows.size(), 2), nullptr);
        for (uint32_t at = 0; at < length; at += blockSize) {
            for (size_t c = 0; c < inputs.size(); ++c) {
                if (c < 2)
                    inputs[c] = input[c] == nullptr ? nullptr : const_cast<float*>(input[c]) + at;
                else
                    inputs[c] = rows[c].empty() ? nullptr : rows[c].data() + dsp::kRowHeadFloats;
            }
            std::array<float*, 2> outputs = {output[0].data() + at, output[1].data() + at};
            dsp::ProcessBlock block;
            block.inputs = inputs.data();
            block.outputs = outputs.data();
            block.numInputs = module.NumInputs();
            block.numOutputs = std::min(module.NumOutputs(), 2u);
            block.numFrames = std::min(blockSize, length - at);
            block.tempo = tempo;
            module.Process(block);
        }
    }

    uint32_t blockSize;
    std::vector<std::vector<float>> rows;  ///< head and samples of each modulation row in use
};

}  // namespace Quorvan::test
