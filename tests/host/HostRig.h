#pragma once

#include "host/engine/Engine.h"
#include "host/parameters/ParameterCatalog.h"
#include "host/state/Preset.h"
#include "support/Test.h"

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

inline Host::ParameterValue Set(std::string_view name, std::string_view text,
                                const Host::TextContext& context = {}) {
    const uint32_t index = IndexOf(name);
    const Host::TextResult result = Catalog().Position(index, text, context);
    EXPECT_TRUE(result.position.has_value()) << result.problem;
    return {index, result.position.value_or(0.0f)};
}

/// Parameters at what "name=text" asks for, several with semicolons between them.
inline std::vector<Host::ParameterValue> Settings(const std::string& all) {
    std::vector<Host::ParameterValue> values;
    std::istringstream stream(all);
    std::string name, text;
    while (std::getline(stream, name, '=') && std::getline(stream, text, ';'))
        values.push_back(Set(name, text));
    return values;
}

inline std::vector<Host::ParameterValue> AudibleSettings(const std::string& more = {}) {
    return Settings(
        "Dry / Wet=50 %;Granular Volume=0 dB;Master Volume=0 dB;MoteWeaver_Pitch=0 st;"
        "MoteWeaver_Shape=Raised Cosine;MoteWeaver_ShapeParam=80 %;"
        "MoteWeaver_GrainSizeAbsolute=60 ms;MoteWeaver_GranularPhaseHelper_RateUnSynced=40 Hz;"
        "MoteWeaver_PlaybackMode=Follow;MoteWeaver_Offset=20 ms;MoteWeaver_BufferLengthSynced=1/2;"
        "MoteWeaver_MaxGrains=64;MoteWeaver_RandomDirection=100 %;MoteWeaver_Spray=20 %;"
        "MoteWeaver_RandomPitch=30 %;" +
        more);
}

/// An engine that is ready to run, with settings if there are any. Whole signals go through it in
/// host buffers of one length.
class ReadyEngine : public Host::Engine {
public:
    explicit ReadyEngine(const std::vector<Host::ParameterValue>& settings = {},
                         const Host::StreamFormat& format = {}, uint64_t seed = 1)
        : Engine(seed) {
        Prepare(format);
        if (!settings.empty())
            Restore(settings);
    }
    StereoSignal Run(const StereoSignal& input, size_t bufferFrames = 512) {
        const size_t length = input[0].size();
        StereoSignal output{Signal(length), Signal(length)};
        for (size_t at = 0; at < length; at += bufferFrames) {
            if (beforeBuffer)
                beforeBuffer(at);
            const std::array<const float*, 2> in{&input[0][at], &input[1][at]};
            const std::array<float*, 2> out{&output[0][at], &output[1][at]};
            std::array<const float*, 2> side{};
            if (sideChain != nullptr)
                side = {&(*sideChain)[0][at], &(*sideChain)[1][at]};
            Process({.inputs = in.data(),
                     .outputs = out.data(),
                     .sideChain = sideChain != nullptr ? side.data() : nullptr,
                     .frames = static_cast<uint32_t>(std::min(bufferFrames, length - at))});
        }
        return output;
    }
    void Pass(size_t frames) { Run({Signal(frames), Signal(frames)}, frames); }

    /// Called ahead of each buffer with its first frame.
    std::function<void(uint64_t)> beforeBuffer;
    const StereoSignal* sideChain = nullptr;
};

inline StereoSignal Silence(size_t frames) { return {Signal(frames), Signal(frames)}; }
inline StereoSignal NoiseInput(size_t frames) {
    return {Noise(1, frames, 0.3f), Noise(2, frames, 0.3f)};
}

}  // namespace Quorvan::test
