#include <benchmark/benchmark.h>

#include <array>
#include <string>

#include "Scenarios.h"
#include "host/engine/Engine.h"
#include "host/parameters/ParameterCatalog.h"
#include "host/state/PresetFormat.h"
#include "host/state/StateTransfer.h"
#include "presets/FactoryPresets.h"

// What each factory preset costs as a shell runs it: with the queue around the processor, in host
// buffers of 256 frames, with a beat as input.
namespace Quorvan::bench {
namespace {

constexpr uint32_t kBufferFrames = 256;
constexpr double kRate = 48000.0;
constexpr double kSettleSeconds = 4.0;  // until as many grains sound as ever will

class Player {
public:
    explicit Player(const Host::FactoryPreset& factory) {
        static const Host::ParameterCatalog catalog;
        const Host::Preset preset = Host::ReadPreset(factory.json, catalog).value.value();
        engine.Prepare({});
        engine.SetTransport({.tempo = preset.tempo.value_or(120.0), .playing = true});
        Host::ApplyPreset(preset, engine, catalog);
        for (double t = 0.0; t < kSettleSeconds; t += kBufferFrames / kRate)
            Play();
    }
    void Play() {
        const std::array<const float*, 2> in{&signal[0][at], &signal[1][at]};
        const std::array<float*, 2> out{output[0].data(), output[1].data()};
        engine.Process({.inputs = in.data(), .outputs = out.data(), .frames = kBufferFrames});
        benchmark::DoNotOptimize(output[0].data());
        at += kBufferFrames;
        if (at + kBufferFrames > signal[0].size())
            at = 0;
    }

private:
    Host::Engine engine{1};
    const test::Stereo signal = Beats(static_cast<float>(kRate));
    test::Stereo output{test::Channel(kBufferFrames), test::Channel(kBufferFrames)};
    size_t at = 0;
};

void RunPreset(benchmark::State& state, const Host::FactoryPreset& preset) {
    Player player(preset);
    for (auto _ : state)
        player.Play();
    const double frames = static_cast<double>(state.iterations()) * kBufferFrames;
    using benchmark::Counter;
    state.counters["ns_per_frame"] = Counter(frames * 1e-9, Counter::kIsRate | Counter::kInvert);
    state.counters["core_percent"] =
        Counter(frames / kRate / 100.0, Counter::kIsRate | Counter::kInvert);
}

const bool registered = [] {
    for (const Host::FactoryPreset& preset : Host::FactoryPresets())
        benchmark::RegisterBenchmark(("BM_Preset/" + std::string(preset.id)).c_str(), RunPreset,
                                     preset);
    return true;
}();

}  // namespace
}  // namespace Quorvan::bench
