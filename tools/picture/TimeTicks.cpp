#include "tools/picture/TimeTicks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "tools/support/Numbers.h"

namespace Quorvan::Tools {

namespace {

/// Steps that clocks go in, in seconds, and the decimals that they take.
struct ClockStep {
    double seconds;
    int decimals;
};
constexpr std::array<ClockStep, 19> kSteps{{{0.001, 3},
                                            {0.002, 3},
                                            {0.005, 3},
                                            {0.01, 2},
                                            {0.02, 2},
                                            {0.05, 2},
                                            {0.1, 1},
                                            {0.2, 1},
                                            {0.5, 1},
                                            {1.0, 0},
                                            {2.0, 0},
                                            {5.0, 0},
                                            {10.0, 0},
                                            {15.0, 0},
                                            {30.0, 0},
                                            {60.0, 0},
                                            {120.0, 0},
                                            {300.0, 0},
                                            {600.0, 0}}};

std::string TwoDigits(int number) {
    return std::string(number < 10 ? "0" : "") + std::to_string(number);
}

std::string BarText(long bar, long beat) {
    // Bars in a pre-roll have a true minus sign.
    std::string text = bar < 0 ? "\xe2\x88\x92" : "";
    text += std::to_string(std::abs(bar));
    if (beat != 1)
        text.append(":").append(std::to_string(beat));
    return text;
}

}  // namespace

std::string ClockText(double seconds, int decimals) {
    const double unit = std::pow(10.0, decimals);
    const double rounded = std::round(seconds * unit) / unit;
    const int minutes = static_cast<int>(rounded / 60.0);
    const double rest = rounded - 60.0 * minutes;
    const std::string tail = std::string(rest < 10.0 ? "0" : "") + Fixed(rest, decimals);
    if (minutes < 60)
        return std::to_string(minutes) + ":" + tail;
    return std::to_string(minutes / 60) + ":" + TwoDigits(minutes % 60) + ":" + tail;
}

std::vector<Tick> ClockTicks(double from, double to, size_t count) {
    const double least = (to - from) / static_cast<double>(std::max<size_t>(count, 1));
    ClockStep step = kSteps.back();
    for (auto one = kSteps.rbegin(); one != kSteps.rend() && one->seconds >= 0.999 * least; ++one)
        step = *one;
    while (step.seconds < least)
        step.seconds *= 2.0;
    std::vector<Tick> ticks;
    const double tolerance = 1.0e-6 * step.seconds;
    const auto first = static_cast<long>(std::ceil((from - tolerance) / step.seconds));
    for (long n = first; static_cast<double>(n) * step.seconds <= to + tolerance; ++n) {
        const double seconds = static_cast<double>(n) * step.seconds;
        ticks.push_back({seconds, ClockText(seconds, step.decimals)});
    }
    return ticks;
}

std::vector<Tick> BarTicks(const TempoMap& song, const Meter& meter, double from, double to,
                           size_t count) {
    const double rate = song.Rate();
    const double firstBeat = song.BeatAt(from * rate) / meter.BeatLength();
    const double lastBeat = song.BeatAt(to * rate) / meter.BeatLength();
    // In beats of the meter: one, or whole bars in a power of two.
    long step = 1;
    const auto most = static_cast<double>(std::max<size_t>(count, 1));
    if (lastBeat - firstBeat > most)
        step = meter.beats;
    while (lastBeat - firstBeat > most * static_cast<double>(step))
        step *= 2;
    std::vector<Tick> ticks;
    constexpr double kTolerance = 1.0e-6;
    const auto steps = static_cast<double>(step);
    const long beats = meter.beats;
    const auto first = static_cast<long>(std::ceil(firstBeat / steps - kTolerance));
    for (long n = first; static_cast<double>(n) * steps <= lastBeat + kTolerance; ++n) {
        const long beat = n * step;
        const long bar = beat >= 0 ? beat / beats : -((beats - 1 - beat) / beats);
        const double frame = song.FrameAt(static_cast<double>(beat) * meter.BeatLength());
        ticks.push_back({frame / rate, BarText(bar + 1, beat - bar * beats + 1)});
    }
    return ticks;
}

}  // namespace Quorvan::Tools
