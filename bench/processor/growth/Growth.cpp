// How the cost grows: with grains, with the rate, with instances that run in turn. Prints a line
// for each measurement: what grows, how far it has, and the share of a core, in percent, that one
// instance takes. script/growth.py makes the table and the picture.
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "Scenarios.h"
#include "processor/ProcessorInternals.h"

namespace {

using namespace Quorvan;

double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

struct Cost {
    double percent = 0.0;  ///< of a core, for each player
    double grains = 0.0;   ///< that sound, on average
};

/// Players that run block by block in turn, as in a session; the least of several stretches, so
/// that what other programs take away does not count.
Cost Measure(const std::vector<std::unique_ptr<bench::BeatPlayer>>& players, float rate) {
    constexpr double kWarmUp = 6.0, kStretch = 2.0;  // seconds of sound
    const double block = static_cast<double>(players[0]->BlockFrames()) / static_cast<double>(rate);
    const auto play = [&](double seconds) {
        for (double done = 0.0; done < seconds; done += block)
            for (const auto& player : players)
                player->Play();
    };
    play(kWarmUp);
    Cost best;
    for (int i = 0; i < 5; ++i) {
        const double start = ThreadSeconds();
        play(kStretch);
        const double percent =
            100.0 * (ThreadSeconds() - start) / kStretch / static_cast<double>(players.size());
        if (i == 0 || percent < best.percent)
            best.percent = percent;
        best.grains += 0.2 * players[0]->Grains();
    }
    return best;
}

Cost Measure(size_t count, float rate, const bench::Positions& positions) {
    std::vector<std::unique_ptr<bench::BeatPlayer>> players;
    for (size_t i = 0; i < count; ++i)
        players.push_back(std::make_unique<bench::BeatPlayer>(rate, positions));
    return Measure(players, rate);
}

void Print(const char* what, double amount, const Cost& cost) {
    std::printf("%s,%.0f,%.4f\n", what, amount, cost.percent);
    std::fflush(stdout);
}

}  // namespace

int main() {
    for (const float limit : {0.0f, 0.1f, 0.2f, 0.35f, 0.5f, 0.65f, 0.8f, 0.9f, 1.0f}) {
        bench::Positions positions = bench::kWorst;
        positions["MoteWeaver_MaxGrains"] = limit;
        const Cost cost = Measure(1, 48000.0f, positions);
        Print("grains", cost.grains, cost);
    }
    for (const float rate : {44100.0f, 48000.0f, 88200.0f, 96000.0f, 176400.0f, 192000.0f})
        Print("rate", static_cast<double>(rate), Measure(1, rate, bench::kMedium));
    for (const size_t count : {1, 2, 4, 8, 16, 32, 64})
        Print("instances", static_cast<double>(count), Measure(count, 48000.0f, bench::kMedium));
    return 0;
}
