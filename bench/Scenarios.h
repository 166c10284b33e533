#pragma once

#include <array>
#include <cmath>
#include <map>
#include <string>

#include "granular/MoteWeaver.h"
#include "processor/ProcessorInternals.h"
#include "support/ProcessorRig.h"
#include "support/TestSignals.h"

namespace Quorvan::bench {

using Positions = std::map<std::string, float>;

/// No grain starts: the gate on the triggers stays shut.
inline const Positions kIdle{{"MoteWeaver_TriggerMode", 1.0f}};

/// A medium cloud, all gains open.
inline const Positions kMedium{{"Dry / Wet", 1.0f},
                               {"Granular Volume", 1.0f},
                               {"Master Volume", 1.0f},
                               {"MoteWeaver_MaxGrains", 0.7f},
                               {"MoteWeaver_GranularPhaseHelper_RateUnSynced", 0.6f},
                               {"MoteWeaver_GrainSizeAbsolute", 0.5f},
                               {"MoteWeaver_Shape", 0.3f},
                               {"MoteWeaver_ShapeParam", 0.5f},
                               {"MoteWeaver_Pitch", 0.5f},
                               {"MoteWeaver_RandomPitch", 0.4f},
                               {"MoteWeaver_RandomPitchArrow", 1.0f},
                               {"MoteWeaver_Width", 0.7f},
                               {"MoteWeaver_RandomDirection", 0.8f},
                               {"MoteWeaver_BufferLengthSynced", 0.5f},
                               {"MoteWeaver_Speed", 0.75f},
                               {"MoteWeaver_Spray", 0.5f},
                               {"MoteWeaver_SprayDirection", 1.0f}};

/// As many grains as there can be, at every pitch, both ways, with the dearest envelope, and the
/// transient detector at work.
inline const Positions kWorst{{"Dry / Wet", 0.8f},
                              {"Granular Volume", 0.9f},
                              {"Master Volume", 1.0f},
                              {"Feedback", 0.9f},
                              {"MoteWeaver_MaxGrains", 1.0f},
                              {"MoteWeaver_GranularPhaseHelper_RateUnSynced", 1.0f},
                              {"MoteWeaver_GrainSizeAbsolute", 1.0f},
                              {"MoteWeaver_Shape", 0.55f},
                              {"MoteWeaver_ShapeParam", 0.5f},
                              {"MoteWeaver_Pitch", 0.5f},
                              {"MoteWeaver_RandomPitch", 1.0f},
                              {"MoteWeaver_RandomPitchArrow", 1.0f},
                              {"MoteWeaver_RandomFine", 1.0f},
                              {"MoteWeaver_RandomSize", 0.2f},
                              {"MoteWeaver_Width", 1.0f},
                              {"MoteWeaver_RandomDirection", 0.5f},
                              {"MoteWeaver_BufferLengthSynced", 1.0f},
                              {"MoteWeaver_Speed", 0.75f},
                              {"MoteWeaver_Spray", 0.8f},
                              {"MoteWeaver_SprayDirection", 1.0f},
                              {"MoteWeaver_PlaybackQuantizationMode", 0.5f},
                              {"MoteWeaver_TransientSensitivity", 1.0f}};

/// A second of a drum-like signal, so that there are transients to find.
inline test::Stereo Beats(float rate) {
    const auto length = static_cast<size_t>(rate);
    test::Stereo signal{test::Noise(1, length), test::Noise(2, length)};
    for (test::Channel& channel : signal)
        for (size_t i = 0; i < length; ++i)
            channel[i] *= 0.8f * std::exp(-12.0f * static_cast<float>(i % (length / 8)) /
                                          static_cast<float>(length / 8));
    return signal;
}

/// Plays Beats through a processor block by block, with nothing around its Process that would cost.
class BeatPlayer {
public:
    BeatPlayer(float rate, const Positions& positions, bool songPlays = true)
        : rig(rate), signal(Beats(rate)) {
        rig.Set(positions);
        for (uint32_t c = 0; c < 2; ++c) {
            output[c].resize(rig.blockSize);
            outputs[c] = output[c].data();
        }
        for (uint32_t c = 0; c < 4; ++c) {
            aux[c].resize(rig.blockSize);
            auxOutputs[c] = aux[c].data();
        }
        data.inputs = inputs;
        data.inputCount = 2;
        data.outputs = outputs;
        data.outputCount = 2;
        data.frameCount = rig.blockSize;
        data.auxOutputs = auxOutputs;
        data.auxOutputCount = 4;
        data.tempo = 120.0f;
        data.transportPlaying = songPlays ? 1 : 0;
    }
    uint32_t BlockFrames() const { return rig.blockSize; }
    /// That sound now.
    uint32_t Grains() const {
        const auto& pool = Processor::GranularModuleOf(*rig.processor).Grains();
        uint32_t count = 0;
        for (uint16_t slot = pool.First(); slot < pool.Capacity(); slot = pool.Next(slot))
            ++count;
        return count;
    }

    const float* Play() {
        for (uint32_t c = 0; c < 2; ++c)
            inputs[c] = &signal[c][at];
        data.songPosition = static_cast<float>(beat);
        rig.processor->Process(&data);
        if (data.transportPlaying != 0)
            beat += 2.0 * static_cast<double>(rig.blockSize) / static_cast<double>(rig.rate);
        at += rig.blockSize;
        if (at + rig.blockSize > signal[0].size())
            at = 0;
        return outputs[0];
    }

private:
    test::ProcessorRig rig;
    test::Stereo signal, output;
    std::array<test::Channel, 4> aux;
    float* inputs[2]{};
    float* outputs[2]{};
    float* auxOutputs[4]{};
    Processor::ProcessData data{};
    size_t at = 0;
    double beat = 0.0;  ///< at 120 BPM
};

}  // namespace Quorvan::bench
