// Runs the worst case block by block and prints how long single blocks take, as shares of their own
// duration: block_times [SECONDS], ten minutes of sound by default.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "Scenarios.h"

int main(int argc, char** argv) {
    using namespace Quorvan;
    using Clock = std::chrono::steady_clock;
    const double seconds = argc > 1 ? std::atof(argv[1]) : 600.0;
    test::ProcessorRig rig;
    rig.Set(bench::kWorst);
    const test::Stereo signal = bench::Beats(rig.rate);
    test::Channel left(rig.blockSize), right(rig.blockSize);
    const double blockSeconds = static_cast<double>(rig.blockSize) / static_cast<double>(rig.rate);
    std::vector<double> shares;
    const auto blocks = static_cast<size_t>(seconds / blockSeconds);
    shares.reserve(blocks);
    size_t at = 0;
    for (size_t k = 0; k < blocks; ++k) {
        const auto start = Clock::now();
        rig.RunBlock({const_cast<float*>(&signal[0][at]), const_cast<float*>(&signal[1][at])},
                     {left.data(), right.data()});
        const std::chrono::duration<double> taken = Clock::now() - start;
        shares.push_back(100.0 * taken.count() / blockSeconds);
        at += rig.blockSize;
        if (at + rig.blockSize > signal[0].size())
            at = 0;
    }
    double sum = 0.0;
    for (const double share : shares)
        sum += share;
    std::sort(shares.begin(), shares.end());
    const auto quantile = [&shares](double q) {
        return shares[static_cast<size_t>(q * static_cast<double>(shares.size() - 1))];
    };
    std::printf(
        "blocks %zu, share of their own duration in %%: mean %.2f, median %.2f, "
        "99.9th percentile %.2f, maximum %.2f\n",
        shares.size(), sum / static_cast<double>(shares.size()), quantile(0.5), quantile(0.999),
        shares.back());
    return 0;
}
