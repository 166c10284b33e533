#include <benchmark/benchmark.h>

#include <ctime>
#include <memory>
#include <random>
#include <vector>

#include "host/instrument/Instrument.h"
#include "host/parameters/SharedCatalog.h"
#include "host/state/PresetFormat.h"
#include "presets/FactoryPresets.h"

// What an open window costs the audio thread.
namespace Quorvan::bench {
namespace {

constexpr uint32_t kFrames = 256;

double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// An instrument that plays noise, with a window that looks at it or without.
class Played {
public:
    Played(const char* preset, bool isWatched) {
        const Host::ParameterCatalog& catalog = Host::SharedCatalog();
        instrument.LoadPreset(
            *Host::ReadPreset(Host::FindFactoryPreset(preset)->json, catalog).value);
        instrument.SetSeed(1);
        Host::StreamFormat format;
        format.sampleRate = 48000.0;
        instrument.Activate(format);
        instrument.Display().Watch(isWatched);
        std::mt19937 random(1);
        std::uniform_real_distribution<float> spread(-0.25f, 0.25f);
        for (float& sample : noise)
            sample = spread(random);
        for (int i = 0; i < 700; ++i)  // until as many grains sound as ever will
            Play();
    }
    double Play() {
        const float* const in[2]{noise.data(), noise.data()};
        float* const out[2]{left.data(), right.data()};
        Host::InstrumentBuffer buffer;
        buffer.audio.inputs = in;
        buffer.audio.outputs = out;
        buffer.audio.frames = kFrames;
        const double start = ThreadSeconds();
        instrument.Process(buffer, nobody);
        const double seconds = ThreadSeconds() - start;
        instrument.Display().Take();
        return seconds;
    }

private:
    Host::Instrument instrument{Host::SharedCatalog()};
    Host::ControlSink nobody;
    std::vector<float> noise = std::vector<float>(kFrames);
    std::vector<float> left = noise, right = noise;
};

/// With the same sound and chance, in turn, each as often ahead as behind: the processor's own
/// guesses of what comes next are better for who is second. Where two happen to lie in memory makes
/// more of a difference than a window does, so that several pairs play, one after the other.
void RunWatched(benchmark::State& state, const char* preset) {
    constexpr size_t kPairs = 12, kStretch = 256;
    struct Pair {
        explicit Pair(const char* preset) : open(preset, true), closed(preset, false) {}
        Played open, closed;
    };
    std::vector<std::unique_ptr<Pair>> pairs;
    for (size_t i = 0; i < kPairs; ++i)
        pairs.push_back(std::make_unique<Pair>(preset));
    double watched = 0.0, alone = 0.0;
    size_t done = 0;
    for (auto _ : state) {
        Pair& pair = *pairs[done++ / kStretch % kPairs];
        if (done % 2 == 0) {
            watched += pair.open.Play();
            alone += pair.closed.Play();
        } else {
            alone += pair.closed.Play();
            watched += pair.open.Play();
        }
    }
    state.counters["percent_for_a_window"] = 100.0 * (watched / alone - 1.0);
}
BENCHMARK_CAPTURE(RunWatched, Init, "init")->Name("BM_OpenWindow/init");
BENCHMARK_CAPTURE(RunWatched, Shimmer, "shimmer")->Name("BM_OpenWindow/shimmer");
BENCHMARK_CAPTURE(RunWatched, Dense, "dense-cloud")->Name("BM_OpenWindow/dense-cloud");

}  // namespace
}  // namespace Quorvan::bench
