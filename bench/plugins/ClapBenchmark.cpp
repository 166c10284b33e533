#include <benchmark/benchmark.h>
#include <malloc.h>
#include <unistd.h>

#include <array>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "host/engine/Engine.h"
#include "host/parameters/ParameterCatalog.h"
#include "host/parameters/ShellIndex.h"
#include "host/state/ParameterReader.h"
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
    void Play() {
        ClapHost::Trapped([this] { instance.plugin->process(instance.plugin, &process); });
    }

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

/// An engine as the plug-in has it, with a factory preset.
class Alone {
public:
    explicit Alone(const char* name) {
        engine.Prepare({.sampleRate = 48000.0, .sideChainInputs = 2, .sendsFeedback = false});
        preset = *Host::ReadPreset(Host::FindFactoryPreset(name)->json, catalog).value;
        Host::ApplyPreset(preset, engine, catalog);
        for (uint32_t index = 0; index < Host::kProcessorParameters; ++index)
            if (IsStored(catalog[index], Host::ParameterScope::Sound))
                values.push_back({index, engine.Position(index)});
    }
    void Restore() { engine.Restore(values); }

    static const Host::ParameterCatalog catalog;
    Host::Engine engine{1};

private:
    Host::Preset preset;
    std::vector<Host::ParameterValue> values;
};
const Host::ParameterCatalog Alone::catalog;

/// Plug-in and engine in turn, with the same sound and chance: the ratio is of one run.
void RunProcess(benchmark::State& state, const char* preset) {
    Caller caller(preset);
    Alone alone(preset);
    Host::Engine& engine = alone.engine;
    engine.Idle(1);
    double plugin = 0.0, bare = 0.0;
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
        bare += ThreadSeconds() - middle;
        plugin += middle - start;
    }
    state.counters["percent_over_engine"] = 100.0 * (plugin / bare - 1.0);
}
BENCHMARK_CAPTURE(RunProcess, Init, "init")->Name("BM_ClapProcess/init");
BENCHMARK_CAPTURE(RunProcess, Shimmer, "shimmer")->Name("BM_ClapProcess/shimmer");
BENCHMARK_CAPTURE(RunProcess, Dense, "dense-cloud")->Name("BM_ClapProcess/dense-cloud");

/// A copy each time: what is open already is not loaded again.
void BM_ClapLibrary(benchmark::State& state) {
    const auto folder = std::filesystem::temp_directory_path();
    uint32_t number = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const std::string name = "tesserae-bench-" + std::to_string(getpid()) + "-";
        const auto copy = folder / (name + std::to_string(number++) + ".clap");
        std::filesystem::copy_file(CLAP_BINARY, copy);
        state.ResumeTiming();
        { ClapLibrary library(copy.string()); }
        state.PauseTiming();
        std::filesystem::remove(copy);
        state.ResumeTiming();
    }
}
BENCHMARK(BM_ClapLibrary)->Unit(benchmark::kMillisecond);

double Megabytes() {
    const auto memory = mallinfo2();
    return static_cast<double>(memory.uordblks + memory.hblkhd) / 1e6;
}

/// What an instance takes beyond an engine. With a seed a second engine stands by.
void BM_ClapMemory(benchmark::State& state) {
    Library();
    Alone::catalog.Count();
    for (auto _ : state) {
        const double before = Megabytes();
        const Alone alone("init");
        const double engine = Megabytes();
        ClapInstance instance(Library());
        instance.Activate();
        const double free = Megabytes();
        ClapInstance seeded(Library());
        seeded.FixChance();
        seeded.Activate();
        state.counters["mb_engine"] = engine - before;
        state.counters["mb_beyond"] = free - engine - (engine - before);
        state.counters["mb_beyond_with_a_seed"] = Megabytes() - free - (engine - before);
    }
}
BENCHMARK(BM_ClapMemory)->Iterations(2)->Unit(benchmark::kMillisecond);

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
/// than the one after it: all of it, and what the engine's own reset is of that. A buffer is a
/// little more than five blocks.
void BM_ClapPreset(benchmark::State& state) {
    Caller caller("shimmer");
    Alone alone("shimmer");
    double switching = 0.0, next = 0.0, reset = 0.0, after = 0.0;
    const auto seconds = [](auto&& work) {
        const double start = ThreadSeconds();
        work();
        return ThreadSeconds() - start;
    };
    const auto run = [&] {
        alone.engine.Process(
            {.inputs = caller.in.data(), .outputs = caller.out.data(), .frames = kFrames});
    };
    for (auto _ : state) {
        caller.instance.LoadPreset(Clap::kLocationPlugin, nullptr, "shimmer");
        state.PauseTiming();
        switching += seconds([&] { caller.Play(); });
        next += seconds([&] { caller.Play(); });
        reset += seconds([&] {
            alone.Restore();
            run();
        });
        after += seconds(run);
        state.ResumeTiming();
    }
    const double scale = 1e6 / static_cast<double>(state.iterations());
    state.counters["audio_us_more"] = scale * (switching - next);
    state.counters["reset_us"] = scale * (reset - after);
    state.counters["audio_us_block"] = scale * next * 48.0 / kFrames;
}
BENCHMARK(BM_ClapPreset)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Quorvan::bench
