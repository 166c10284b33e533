#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "Scenarios.h"
#include "processor/ProcessorInternals.h"

namespace Quorvan::bench {
namespace {

using test::ProcessorRig;

/// Time a frame, and the share of one core that keeps up with the rate.
void RunScenario(benchmark::State& state, const Positions& positions, bool songPlays = true) {
    const auto rate = static_cast<float>(state.range(0));
    BeatPlayer player(rate, positions, songPlays);
    const uint32_t blockFrames = player.BlockFrames();
    for (float settled = 0.0f; settled < 3.0f * rate; settled += static_cast<float>(blockFrames))
        player.Play();
    for (auto _ : state)
        benchmark::DoNotOptimize(player.Play());
    const double frames = static_cast<double>(state.iterations()) * blockFrames;
    state.SetItemsProcessed(static_cast<int64_t>(frames));
    using benchmark::Counter;
    state.counters["ns_per_frame"] = Counter(frames * 1e-9, Counter::kIsRate | Counter::kInvert);
    state.counters["core_percent"] =
        Counter(frames / static_cast<double>(rate) / 100.0, Counter::kIsRate | Counter::kInvert);
}

double ResidentMegabytes() {
    std::FILE* const file = std::fopen("/proc/self/statm", "r");
    long total = 0, resident = 0;
    const bool read = file != nullptr && std::fscanf(file, "%ld %ld", &total, &resident) == 2;
    if (file != nullptr)
        std::fclose(file);
    return read ? static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6
                : 0.0;
}

/// What one processor adds to a fresh process, in megabytes.
double MeasureResident(float rate) {
    int ends[2];
    if (pipe(ends) != 0)
        return 0.0;
    const pid_t child = fork();
    if (child == 0) {
        const double before = ResidentMegabytes();
        ProcessorRig rig(rate);
        rig.RunSilence(1);
        const double taken = ResidentMegabytes() - before;
        const bool sent = write(ends[1], &taken, sizeof(taken)) == sizeof(taken);
        _exit(sent ? 0 : 1);
    }
    double megabytes = 0.0;
    const bool received = read(ends[0], &megabytes, sizeof(megabytes)) == sizeof(megabytes);
    waitpid(child, nullptr, 0);
    close(ends[0]);
    close(ends[1]);
    return received ? megabytes : 0.0;
}

/// Memory, not a time.
void BM_ProcessorResidentSize(benchmark::State& state) {
    for (auto _ : state)
        state.counters["resident_MB"] = MeasureResident(static_cast<float>(state.range(0)));
    state.counters["object_kB"] = static_cast<double>(Processor::ProcessorObjectBytes()) / 1000.0;
}
BENCHMARK(BM_ProcessorResidentSize)->Arg(44100)->Arg(48000)->Arg(192000)->Iterations(1);

void BM_ProcessorIdle(benchmark::State& state) { RunScenario(state, kIdle, false); }
void BM_ProcessorIdleWhileSongPlays(benchmark::State& state) { RunScenario(state, kIdle); }
void BM_ProcessorMedium(benchmark::State& state) { RunScenario(state, kMedium); }
void BM_ProcessorWorst(benchmark::State& state) { RunScenario(state, kWorst); }
/// The two dearest effects in the slots, both in the loop.
const Positions kDearSlots{{"FX1_Position", 1.0f},          {"FX1_Dry / Wet", 0.5f},
                           {"FX1_ModuleType", 6.0f / 9.0f},  // tape echo
                           {"FX2_Position", 1.0f},          {"FX2_Dry / Wet", 0.5f},
                           {"FX2_ModuleType", 5.0f / 9.0f},  // octaver delay
                           {"FX2_OctaverDelay_Mode", 0.5f}};
/// A function that moves the delay times of both, so that they glide all along.
const Positions kMovedSlots{{"Function1_Mode", 1.0f},
                            {"Function1_PointX2", 0.5f},
                            {"Function1_PointY2", 1.0f},
                            {"Function1_RateUnSynced", 0.7f},
                            {"Modulations_Dst53_Src2_Amount", 0.9f},
                            {"Modulations_Dst77_Src2_Amount", 0.9f}};

Positions Joined(Positions positions, std::initializer_list<Positions> more) {
    for (const Positions& further : more)
        positions.insert(further.begin(), further.end());
    return positions;
}

/// Against ProcessorIdle: what the slots cost.
void BM_ProcessorIdleWithSlots(benchmark::State& state) {
    RunScenario(state, Joined(kIdle, {kDearSlots}));
}
void BM_ProcessorIdleWithMovedSlots(benchmark::State& state) {
    RunScenario(state, Joined(kIdle, {kDearSlots, kMovedSlots}));
}
void BM_ProcessorWorstWithSlots(benchmark::State& state) {
    RunScenario(state, Joined(kWorst, {kDearSlots}));
}
BENCHMARK(BM_ProcessorIdleWithSlots)->Arg(48000);
BENCHMARK(BM_ProcessorIdleWithMovedSlots)->Arg(48000);
BENCHMARK(BM_ProcessorWorstWithSlots)->Arg(48000);
BENCHMARK(BM_ProcessorIdle)->Arg(48000);
BENCHMARK(BM_ProcessorIdleWhileSongPlays)->Arg(48000);
BENCHMARK(BM_ProcessorMedium)->Arg(48000);
BENCHMARK(BM_ProcessorWorst)->Arg(48000)->Arg(192000);

}  // namespace
}  // namespace Quorvan::bench
