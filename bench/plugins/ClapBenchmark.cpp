#include <benchmark/benchmark.h>

#include <array>
#include <ctime>
#include <string>

#include "host/engine/Engine.h"
#include "host/parameters/ParameterCatalog.h"
#include "host/state/PresetFormat.h"
#include "host/state/StateTransfer.h"
#include "plugins/claphost/ClapInstance.h"
#include "presets/FactoryPresets.h"

// What the plug-in adds to the engine, and what a host waits for: loading, making, states, presets.
namespace Quorvan::bench {
namespace {

using ClapHost::ClapInstance;
using ClapHost::ClapLibrary;

constexpr uint32_t kFrames = 256;

const ClapLibrary& Library() {
    static const ClapLibrary library(CLAP_BINARY);
    return library;
}

double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// The same buffer over and over, straight into the plug-in.
class Caller {
public:
    explicit Caller(const char* preset) {
        instance.LoadPreset(Clap::kLocationPlugin, nullptr, preset);
        instance.FixChance(1);
        instance.Activate();
    }
    void Play() { instance.plugin->process(instance.plugin, &process); }

    ClapInstance instance{Library()};
    ClapHost::Sound input = ClapHost::Noise(kFrames), output = ClapHost::Silence(kFrames);
    std::array<float*, 2> in{input[0].data(), input[1].data()};
    std::array<float*, 2> out{output[0].data(), output[1].data()};

private:
    std::array<clap_audio_buffer_t, 2> inputs{{{in.data(), nullptr, 2, 0, 0}, {}}};
    clap_audio_buffer_t outputs{out.data(), nullptr, 2, 0, 0};
    ClapHost::EventList none;
    ClapHost::EventSink sink{kFrames};
    clap_input_events_t taken = none.Input();
    clap_output_events_t given = sink.Output();
    clap_process_t process{0, kFrames, nullptr, inputs.data(), &outputs, 1, 1, &taken, &given};
};

/// Plug-in and engine in turn, with the same sound and chance: the ratio is of one run.
void RunProcess(benchmark::State& state, const char* preset) {
    static const Host::ParameterCatalog catalog;
    Caller caller(preset);
    Host::Engine engine{1};
    engine.Prepare({.sampleRate = 48000.0, .sideChainInputs = 2, .sendsFeedback = false});
    Host::ApplyPreset(*Host::ReadPreset(Host::FindFactoryPreset(preset)->json, catalog).value,
                      engine, catalog);
    engine.Idle(1);
    double plugin = 0.0, alone = 0.0;
    for (int i = 0; i < 700; ++i) {  // until as many grains sound as ever will
        caller.Play();
        engine.Process(
            {.inputs = caller.in.data(), .outputs = caller.out.data(), .frames = kFrames});
    }
    for (auto _ : state) {
        const double start = ThreadSeconds();
        caller.Play();
        const double middle = ThreadSeconds();
        engine.Process(
            {.inputs = caller.in.data(), .outputs = caller.out.data(), .frames = kFrames});
        alone += ThreadSeconds() - middle;
        plugin += middle - start;
    }
    state.counters["percent_over_engine"] = 100.0 * (plugin / alone - 1.0);
}
BENCHMARK_CAPTURE(RunProcess, Init, "init")->Name("BM_ClapProcess/init");
BENCHMARK_CAPTURE(RunProcess, Shimmer, "shimmer")->Name("BM_ClapProcess/shimmer");
BENCHMARK_CAPTURE(RunProcess, Dense, "dense-cloud")->Name("BM_ClapProcess/dense-cloud");

void BM_ClapLibrary(benchmark::State& state) {
    for (auto _ : state)
        ClapLibrary library(CLAP_BINARY);
}
BENCHMARK(BM_ClapLibrary)->Unit(benchmark::kMillisecond);

void BM_ClapInstance(benchmark::State& state) {
    Library();
    for (auto _ : state) {
        ClapInstance instance(Library());
        instance.Activate();
    }
}
BENCHMARK(BM_ClapInstance)->Unit(benchmark::kMillisecond);

void BM_ClapStateSave(benchmark::State& state) {
    const Caller caller("shimmer");
    for (auto _ : state)
        benchmark::DoNotOptimize(caller.instance.Save());
}
BENCHMARK(BM_ClapStateSave)->Unit(benchmark::kMillisecond);

void BM_ClapStateLoad(benchmark::State& state) {
    Caller caller("shimmer");
    const std::string saved = caller.instance.Save();
    for (auto _ : state)
        caller.instance.Load(saved);
}
BENCHMARK(BM_ClapStateLoad)->Unit(benchmark::kMillisecond);

/// The main thread's part, and of the audio thread's what a buffer with the new preset costs more
/// than the one after it; a block is 48 frames of its 256.
void BM_ClapPreset(benchmark::State& state) {
    Caller caller("shimmer");
    double switching = 0.0, next = 0.0;
    for (auto _ : state) {
        caller.instance.LoadPreset(Clap::kLocationPlugin, nullptr, "shimmer");
        state.PauseTiming();
        const double start = ThreadSeconds();
        caller.Play();
        const double middle = ThreadSeconds();
        caller.Play();
        next += ThreadSeconds() - middle;
        switching += middle - start;
        state.ResumeTiming();
    }
    const auto turns = static_cast<double>(state.iterations());
    state.counters["audio_us_more"] = 1e6 * (switching - next) / turns;
    state.counters["audio_us_buffer"] = 1e6 * next / turns;
}
BENCHMARK(BM_ClapPreset)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Quorvan::bench
