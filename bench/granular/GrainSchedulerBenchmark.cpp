#include "granular/GrainScheduler.h"

#include <benchmark/benchmark.h>

#include <array>
#include <vector>

#include "granular/GranularTables.h"

// Decision and birth of grains, a block of a millisecond at 48 kHz each. "start" is the time for
// one pair of grains with everything about it random.
namespace Quorvan {
namespace {

using dsp::Curve;

constexpr uint32_t kFrames = 48;

struct Engine {
    explicit Engine(float tick) : ticks(kFrames, tick) {
        pool.Resize(258);
        settings.grainLimit = 257;
        settings.randomPitchArrow = settings.sprayDirection = settings.randomSizeArrow = 2;
        settings.spatializerEnabled = true;
        settings.randomDistance = 0.5f;
        settings.distanceRange = 50.0f;
        settings.shape = 5;
        capture.length = capture.previousLength = 384000;
        capture.lengthMs = 8000.0f;
        capture.writePosition = 200000;
        capture.playPosition = 100000.0;
        for (size_t i = 0; i < rows.size(); ++i) {
            rows[i].assign(kFrames, 0.5f);
            curves.rows[i] = rows[i].data();
        }
        rows[static_cast<size_t>(Curve::GrainSizeAbsolute)].assign(kFrames, 120.0f);
    }
    void Run() {
        scheduler.BeginBlock({.tick = ticks.data(),
                              .hz = 40.0f,
                              .mainRate = rate.data(),
                              .sequence = rate.data(),
                              .sampleRate = 48000.0f});
        for (uint32_t n = 0; n < kFrames; ++n)
            scheduler.Step(n);
    }

    std::vector<float> ticks;
    std::vector<float> rate = std::vector<float>(kFrames, 40.0f);
    std::array<std::vector<float>, static_cast<size_t>(Curve::Count)> rows;
    dsp::GrainPool pool;
    dsp::CaptureBuffer capture;
    dsp::MarkerRing ring;
    dsp::GranularSettings settings;
    dsp::BlockCurves curves;
    dsp::StereoPosition position;
    dsp::GatePulse gate;
    dsp::GrainScheduler scheduler{pool, capture, ring, settings, curves, position, gate};
};

void BM_AStartAtEverySample(benchmark::State& state) {
    Engine engine(1.0f);
    for (auto _ : state) {
        engine.pool.Clear();
        engine.Run();
        benchmark::DoNotOptimize(engine.pool.Count());
    }
    state.counters["start"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * kFrames,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_AStartAtEverySample);

void BM_NoStart(benchmark::State& state) {
    Engine engine(0.0f);
    for (auto _ : state) {
        engine.Run();
        benchmark::DoNotOptimize(engine.pool.Count());
    }
}
BENCHMARK(BM_NoStart);

/// 256 grains that end in one block, in the order that leaves the most free runs to walk.
void BM_EraseAll(benchmark::State& state) {
    dsp::GrainPool pool;
    pool.Resize(258);
    for (auto _ : state) {
        while (pool.Count() < 256)
            pool.Add({});
        for (int slot = 255; slot >= 0; slot -= 2)
            pool.Erase(static_cast<uint16_t>(slot));
        for (int slot = 254; slot >= 0; slot -= 2)
            pool.Erase(static_cast<uint16_t>(slot));
        benchmark::DoNotOptimize(pool.FirstFree());
    }
}
BENCHMARK(BM_EraseAll);

/// A clearing of a full tape of 16 seconds, with the block that follows.
void BM_ClearFullTape(benchmark::State& state) {
    dsp::CaptureBuffer tape;
    tape.Setup(48000.0f);
    tape.SetLength(16.0f, 1.0f);
    const auto record = [&tape](uint32_t samples) {
        for (uint32_t i = 0; i < samples; ++i) {
            tape.Write(0.1f, 0.1f, 0.0f);
            tape.AdvanceFree();
        }
    };
    for (auto _ : state) {
        state.PauseTiming();
        record(2 * tape.length);
        state.ResumeTiming();
        tape.Clear();
        record(kFrames);
    }
}
BENCHMARK(BM_ClearFullTape)->Iterations(50);

}  // namespace
}  // namespace Quorvan
