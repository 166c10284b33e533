#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "modulation/Counters.h"
#include "modulation/EnvFollower.h"
#include "modulation/FunctionGenerator.h"
#include "modulation/LFO.h"
#include "modulation/MonoModulations.h"
#include "modulation/StepSequencer.h"
#include "support/TestSignals.h"

namespace Quorvan::bench {

using Matrix = dsp::MonoModulations<7, 95, 1, dsp::DefaultModulationPolicy>;
using Function = dsp::FunctionGenerator<64>;

inline Matrix MakeMatrix() {
    return {0x7f, dsp::Parameter::MakeContinuous("", dsp::PotardKind::kLinear, -1.0f, 1.0f, 0.5f),
            "Modulations"};
}

/// A playing song at 120 BPM, block by block.
struct Song {
    dsp::ProcessBlock Block() const {
        dsp::ProcessBlock block;
        block.numFrames = kFrames;
        block.tempo = 120.0f;
        block.songPosition = static_cast<float>(beat);
        block.transportPlaying = 1;
        return block;
    }
    void GoOn() { beat += kFrames / double{kRate} * 2.0; }

    double beat = 0.0;
};

/// A curve of points points with a bend in each segment; synced to quarter notes or free.
inline void Draw(Function& function, uint32_t points, bool synced) {
    function.Setup(kRate, kFrames);
    function.Configure(Function::RateUnSynced, dsp::PotardKind::kLinear, 0.0f, 20.0f);
    function.SetParameterValue(Function::RateUnSynced, 3.0f);
    function.SetParameterValue(Function::Mode, synced ? 2.0f : 1.0f);
    function.SetParameterValue(Function::MidiSync, synced ? 1.0f : 0.0f);
    function.SetParameterValue(Function::RateSynced, 5.0f);
    function.SetParameterValue(Function::LastActivePointIndex, static_cast<float>(points - 1));
    for (uint32_t k = 0; k < points; ++k) {
        function.SetParameterValue(Function::PointX1 + k,
                                   static_cast<float>(k) / static_cast<float>(points - 1));
        function.SetParameterValue(Function::PointY1 + k, k % 2 == 0 ? 0.0f : 1.0f);
        if (k + 1 < points)
            function.SetParameterValue(Function::Tension1 + k, k % 2 == 0 ? 3.0f : -3.0f);
    }
}

/// Sixteen steps in sixteenths that follow the song, with a glide if wanted.
inline void Fill(dsp::StepSequencer& sequencer, bool glide) {
    using S = dsp::StepSequencer;
    sequencer.Setup(kRate, kFrames);
    sequencer.SetParameterValue(S::Mode, 2.0f);
    sequencer.SetParameterNormalized(S::MidiSync, 1.0f);
    sequencer.SetParameterValue(S::RateSynced, 7.0f);
    sequencer.SetParameterNormalized(S::SppHardFollow, 1.0f);
    sequencer.SetParameterValue(S::NbSteps, 16.0f);
    sequencer.SetParameterValue(S::Smooth, glide ? 0.3f : 0.0f);
    for (uint32_t k = 0; k < S::kMaxSteps; ++k) {
        sequencer.Configure(S::StepVal1 + k, dsp::PotardKind::kLinear, 0.0f, 1.0f);
        sequencer.SetParameterValue(S::StepVal1 + k, static_cast<float>(k % 5) * 0.25f);
    }
}

/// A second of noise of two channels, read block by block.
class NoiseInput {
public:
    float* const* Next() {
        at = (at + kFrames) % kLength;
        for (uint32_t c = 0; c < 2; ++c)
            channels[c] = noise[c].data() + at;
        return channels.data();
    }

private:
    static constexpr uint32_t kLength = 1000 * kFrames;

    std::array<std::vector<float>, 2> noise{test::Noise(1, kLength, 0.5f),
                                            test::Noise(2, kLength, 0.5f)};
    std::array<float*, 2> channels{};
    uint32_t at = 0;
};

}  // namespace Quorvan::bench
