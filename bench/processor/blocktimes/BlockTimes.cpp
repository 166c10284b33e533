// Runs the worst case block by block and prints how long single blocks take, as shares of their own
// duration: block_times [SECONDS], ten minutes of sound by default.
//
// The same run is made three times from the same seed, so that block k does the same work each
// time. What is dear because of the work is dear in all of them; what is dear in one only was the
// machine's: an interrupt, another program, a virtual processor taken away.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "Scenarios.h"

namespace {

using namespace Quorvan;

using Shares = std::vector<double>;

/// The time of each block, in percent of its own duration.
Shares TimeBlocks(double seconds) {
    using Clock = std::chrono::steady_clock;
    constexpr float kRate = 48000.0f;
    bench::BeatPlayer player(kRate, bench::kWorst);
    const double blockSeconds = static_cast<double>(player.BlockFrames()) / double{kRate};
    Shares shares(static_cast<size_t>(seconds / blockSeconds));
    for (double& share : shares) {
        const auto start = Clock::now();
        player.Play();
        const std::chrono::duration<double> taken = Clock::now() - start;
        share = 100.0 * taken.count() / blockSeconds;
    }
    return shares;
}

void Print(const char* what, Shares shares) {
    double sum = 0.0;
    for (const double share : shares)
        sum += share;
    std::sort(shares.begin(), shares.end());
    const auto quantile = [&shares](double q) {
        return shares[static_cast<size_t>(q * static_cast<double>(shares.size() - 1))];
    };
    std::printf("%-26s mean %.2f, median %.2f, 99.9th percentile %.2f, maximum %.2f\n", what,
                sum / static_cast<double>(shares.size()), quantile(0.5), quantile(0.999),
                shares.back());
}

}  // namespace

int main(int argc, char** argv) {
    const double seconds = argc > 1 ? std::atof(argv[1]) : 600.0;
    Shares least = TimeBlocks(seconds);
    if (least.empty())
        return 2;
    std::printf("%zu blocks, share of their own duration in %%\n", least.size());
    Print("first run", least);
    for (const char* name : {"second run", "third run"}) {
        const Shares shares = TimeBlocks(seconds);
        Print(name, shares);
        std::transform(least.begin(), least.end(), shares.begin(), least.begin(),
                       [](double a, double b) { return std::min(a, b); });
    }
    Print("least of the three runs", least);
    return 0;
}
