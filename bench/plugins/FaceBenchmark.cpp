#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <numeric>
#include <vector>

// Behind all others, whose names X11 takes for macros.
#include "plugins/claphost/Frame.h"

// How long a host's user waits for the window.
namespace Quorvan::bench {
namespace {

/// From the host's first call until the window on the display holds a picture, by the clock: the
/// timer runs as soon as it may. "first" is the very first window, whose fonts nobody has loaded.
void BM_FaceOpening(benchmark::State& state) {
    Display* const display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        state.SkipWithError("There is no display.");
        return;
    }
    const ClapHost::ClapLibrary library(CLAP_BINARY);
    ClapHost::ClapInstance instance(library);
    std::vector<double> times;
    for (auto _ : state) {
        using Clock = std::chrono::steady_clock;
        const Clock::time_point began = Clock::now();
        ClapHost::Frame frame(display, instance, 1.0, 0);
        while (ClapHost::Colours(frame.Pixels(256, 48)) < 8)
            instance.RunTimers(1);
        times.push_back(std::chrono::duration<double>(Clock::now() - began).count());
        state.SetIterationTime(times.back());
    }
    state.counters["mean_ms"] =
        1e3 * std::accumulate(times.begin(), times.end(), 0.0) / static_cast<double>(times.size());
    state.counters["first_ms"] = 1e3 * times.front();
    state.counters["longest_ms"] = 1e3 * *std::max_element(times.begin(), times.end());
    XCloseDisplay(display);
}
BENCHMARK(BM_FaceOpening)->Iterations(20)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace Quorvan::bench
