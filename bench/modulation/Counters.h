#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>

namespace Quorvan::bench {

inline constexpr float kRate = 48000.0f;
inline constexpr uint32_t kFrames = 48;  ///< block size at kRate

/// Time a frame, and the share of one core that keeps up with kRate.
inline void CountFrames(benchmark::State& state) {
    using benchmark::Counter;
    const double frames = static_cast<double>(state.iterations()) * kFrames;
    state.SetItemsProcessed(static_cast<int64_t>(frames));
    state.counters["ns_per_frame"] = Counter(frames * 1e-9, Counter::kIsRate | Counter::kInvert);
    state.counters["core_percent"] =
        Counter(frames / double{kRate} / 100.0, Counter::kIsRate | Counter::kInvert);
}

}  // namespace Quorvan::bench
