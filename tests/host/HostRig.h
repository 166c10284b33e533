#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "host/engine/Engine.h"
#include "host/parameters/ParameterCatalog.h"
#include "host/state/Preset.h"
#include "support/TestSignals.h"

namespace Quorvan::test {

using Signal = std::vector<float>;
using StereoSignal = std::array<Signal, 2>;

/// The catalog takes a moment to build, and never changes.
inline const Host::ParameterCatalog& Catalog() {
    static const Host::ParameterCatalog catalog;
    return catalog;
}

inline uint32_t IndexOf(std::string_view name) {
    const auto index = Catalog().Find(name);
    EXPECT_TRUE(index.has_value()) << name;
    return index.value_or(0);
}

/// A parameter at what a text asks for.
inline Host::ParameterValue Set(std::string_view name, std::string_view text,
                                const Host::TextContext& context = {}) {
    const uint32_t index = IndexOf(name);
    const Host::TextResult result = Catalog().Position(index, text, context);
    EXPECT_TRUE(result.position.has_value()) << result.problem;
    return {index, result.position.value_or(0.0f)};
}

/// Settings that let dry and wet signal through, with short grains in quick succession.
inline std::vector<Host::ParameterValue> AudibleSettings() {
    return {Set("Dry / Wet", "50 %"),
            Set("Granular Volume", "0 dB"),
            Set("Master Volume", "0 dB"),
            Set("MoteWeaver_Pitch", "0 st"),
            Set("MoteWeaver_Shape", "Raised Cosine"),
            Set("MoteWeaver_ShapeParam", "80 %"),
            Set("MoteWeaver_GrainSizeAbsolute", "60 ms"),
            Set("MoteWeaver_GranularPhaseHelper_RateUnSynced", "40 Hz"),
            Set("MoteWeaver_PlaybackMode", "Follow"),
            Set("MoteWeaver_Offset", "20 ms"),
            Set("MoteWeaver_BufferLengthSynced", "1/2"),
            Set("MoteWeaver_MaxGrains", "64"),
            Set("MoteWeaver_RandomDirection", "100 %"),
            Set("MoteWeaver_Spray", "20 %"),
            Set("MoteWeaver_RandomPitch", "30 %")};
}

/// Feeds whole signals through an engine in host buffers of one length.
class HostStream {
public:
    explicit HostStream(Host::Engine& running) : engine(running) {}

    /// Called ahead of each buffer with its first frame.
    std::function<void(uint64_t)> beforeBuffer;
    const StereoSignal* sideChain = nullptr;

    StereoSignal Run(const StereoSignal& input, size_t bufferFrames) {
        const size_t length = input[0].size();
        StereoSignal output{Signal(length), Signal(length)};
        for (size_t at = 0; at < length; at += bufferFrames) {
            if (beforeBuffer)
                beforeBuffer(at);
            RunBuffer(input, output, at, std::min(bufferFrames, length - at));
        }
        return output;
    }

private:
    void RunBuffer(const StereoSignal& input, StereoSignal& output, size_t at, size_t frames) {
        const std::array<const float*, 2> in{input[0].data() + at, input[1].data() + at};
        const std::array<float*, 2> out{output[0].data() + at, output[1].data() + at};
        std::array<const float*, 2> side{};
        if (sideChain != nullptr)
            side = {(*sideChain)[0].data() + at, (*sideChain)[1].data() + at};
        Host::AudioBuffers buffers;
        buffers.inputs = in.data();
        buffers.outputs = out.data();
        buffers.sideChain = sideChain != nullptr ? side.data() : nullptr;
        buffers.frames = static_cast<uint32_t>(frames);
        engine.Process(buffers);
    }

    Host::Engine& engine;
};

inline StereoSignal Silence(size_t frames) { return {Signal(frames), Signal(frames)}; }
inline StereoSignal NoiseInput(size_t frames) {
    return {Noise(1, frames, 0.3f), Noise(2, frames, 0.3f)};
}

inline float PeakOf(const Signal& signal, size_t from = 0, size_t to = SIZE_MAX) {
    float peak = 0.0f;
    for (size_t i = from; i < std::min(to, signal.size()); ++i)
        peak = std::max(peak, std::abs(signal[i]));
    return peak;
}

}  // namespace Quorvan::test
