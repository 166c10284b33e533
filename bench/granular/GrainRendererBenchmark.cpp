#include "granular/GrainRenderer.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <string>

#include "granular/GrainCloud.h"
#include "support/PlainGrains.h"

// Each benchmark plays a cloud of grains over one block of a millisecond, at 48 kHz, from a loop of
// 8 seconds. The counter "grain_sample" is the time for one sample of one grain; 257 grains take
// that times 257 * 48000 of every second.
namespace Quorvan {
namespace {

using test::GrainCloud;

constexpr uint32_t kFrames = 48;

template <class Player>
void Play(benchmark::State& state, const GrainCloud::Style& style, Player& player,
          const auto& block) {
    GrainCloud cloud(style);
    std::array<dsp::AlignedVector, 2> out{dsp::AlignedVector(kFrames), dsp::AlignedVector(kFrames)};
    for (auto _ : state) {
        for (auto& channel : out)
            std::fill(channel.begin(), channel.end(), 0.0f);
        cloud.NextBlock(kFrames);
        player.Render(cloud.pool, cloud.tape, block, out[0].data(), out[1].data(), cloud.ended);
        benchmark::DoNotOptimize(out[0].data());
        benchmark::ClobberMemory();
    }
    const double samples = static_cast<double>(state.iterations()) * style.grains * kFrames;
    state.SetItemsProcessed(static_cast<int64_t>(samples));
    state.counters["grain_sample"] =
        benchmark::Counter(samples, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void Fast(benchmark::State& state, const GrainCloud::Style& style, bool crossfade,
          const dsp::GrainKernels& kernels, bool interpolate = true) {
    dsp::GrainRenderer renderer;
    renderer.Setup(style.rate, kFrames);
    renderer.UseKernels(kernels);
    Play(state, style, renderer,
         dsp::GrainRenderer::Block{
             .numFrames = kFrames, .crossfade = crossfade, .interpolate = interpolate});
}

void Plain(benchmark::State& state, const GrainCloud::Style& style, bool crossfade) {
    test::PlainGrains player(style.rate, kFrames);
    Play(state, style, player,
         test::PlainGrains::Block{.numFrames = kFrames, .crossfade = crossfade});
}

/// Shape, number of grains, crossfade, frozen.
GrainCloud::Style StyleOf(const benchmark::State& state) {
    return {.grains = static_cast<uint32_t>(state.range(1)),
            .shape = static_cast<int32_t>(state.range(0)),
            .frozen = state.range(3) != 0};
}

void BM_GrainsPlain(benchmark::State& state) { Plain(state, StyleOf(state), state.range(2) != 0); }

void AllShapes(benchmark::internal::Benchmark* b) {
    b->ArgNames({"shape", "grains", "crossfade", "frozen"});
    b->ArgsProduct({{0, 1, 2, 3, 4, 5, 6, 7}, {16, 64, 257}, {0, 1}, {0, 1}});
}
BENCHMARK(BM_GrainsPlain)->Apply(AllShapes);

/// The same by each instruction set that the machine has: BM_Grains_AVX2 and so on.
const bool kRegistered = [] {
    for (const dsp::GrainKernels* kernels : dsp::GrainKernels::Supported()) {
        const std::string name = std::string("BM_Grains_") + kernels->name;
        const auto run = [kernels](benchmark::State& state) {
            Fast(state, StyleOf(state), state.range(2) != 0, *kernels);
        };
        benchmark::RegisterBenchmark(name.c_str(), run)->Apply(AllShapes);
    }
    return true;
}();

// What is dear for one reason or another, with the raised cosine.
void BM_GrainsUnison(benchmark::State& state) {
    Fast(state, {.shape = 2, .octaves = 0.0f, .reversedShare = 0.0f}, true,
         dsp::GrainKernels::Best());
}
BENCHMARK(BM_GrainsUnison);

/// All grains start within 3 ms of the write head and stay close.
void BM_GrainsAtTheHead(benchmark::State& state) {
    Fast(state, {.shape = 2, .octaves = 0.02f, .scatter = 0.0004f, .reversedShare = 0.0f},
         state.range(0) != 0, dsp::GrainKernels::Best());
}
BENCHMARK(BM_GrainsAtTheHead)->ArgName("crossfade")->Arg(0)->Arg(1);

void BM_GrainsNotInterpolated(benchmark::State& state) {
    Fast(state, {.shape = 2}, true, dsp::GrainKernels::Best(), false);
}
BENCHMARK(BM_GrainsNotInterpolated);

/// Unison grains on whole samples, which move one by one.
void BM_GrainsNotInterpolatedOnSamples(benchmark::State& state) {
    Fast(state, {.shape = 2, .octaves = 0.0f, .onSamples = true}, true, dsp::GrainKernels::Best(),
         false);
}
BENCHMARK(BM_GrainsNotInterpolatedOnSamples);

/// All grains fade out at once and go on fading.
void BM_GrainsReleased(benchmark::State& state) {
    const GrainCloud::Style style{.shape = 2};
    GrainCloud cloud(style);
    dsp::GrainRenderer renderer;
    renderer.Setup(style.rate, kFrames);
    std::array<float, kFrames> left{};
    std::array<float, kFrames> right{};
    for (auto _ : state) {
        cloud.NextBlock(kFrames);
        for (uint16_t s = cloud.pool.First(); s < cloud.pool.Capacity(); s = cloud.pool.Next(s)) {
            cloud.pool[s].releasing = true;
            cloud.pool[s].envelope = 1.0f;
        }
        renderer.Render(cloud.pool, cloud.tape, {.numFrames = kFrames, .crossfade = true},
                        left.data(), right.data(), cloud.ended);
        benchmark::DoNotOptimize(left.data());
    }
    state.counters["grain_sample"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * style.grains * kFrames,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_GrainsReleased);

}  // namespace
}  // namespace Quorvan
