#include "tools/support/Progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

namespace Quorvan::Tools {

namespace {

constexpr int kBarLength = 28;                          // characters
constexpr auto kPause = std::chrono::milliseconds(80);  // between two looks of the bar

std::string Clockwise(double seconds) {
    const auto whole = static_cast<long>(std::max(0.0, seconds));
    char text[32];
    std::snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60);
    return text;
}

std::string Percent(double share) { return std::to_string(static_cast<int>(share * 100.0)) + " %"; }

std::string Bar(double share) {
    const int filled = static_cast<int>(share * kBarLength);
    return std::string(static_cast<size_t>(filled), '#') +
           std::string(static_cast<size_t>(kBarLength - filled), '.');
}

}  // namespace

Progress::Progress(double rate, std::optional<uint64_t> total, bool isCertain, bool wanted)
    : sampleRate(rate),
      totalFrames(total),
      certain(isCertain),
      visible(wanted && isatty(STDERR_FILENO) != 0) {}

void Progress::Show(uint64_t frames) {
    if (!visible)
        return;
    const auto now = Clock::now();
    if (drawn && now - last < kPause)
        return;
    last = now;
    drawn = true;
    Draw(frames, std::chrono::duration<double>(now - start).count());
}

void Progress::Draw(uint64_t frames, double elapsed) const {
    const double done = static_cast<double>(frames) / sampleRate;
    const double speed = elapsed > 0.0 ? done / elapsed : 0.0;
    std::string line;
    if (totalFrames && *totalFrames > 0) {
        const double all = static_cast<double>(*totalFrames) / sampleRate;
        const double share = std::min(1.0, done / all);
        line.append("[").append(Bar(share)).append("] ").append(Percent(share)).append("  ");
        line.append(Clockwise(done)).append(certain ? " of " : " of at most ");
        line.append(Clockwise(all));
        if (speed > 0.0)
            line.append("  ").append(Clockwise((all - done) / speed)).append(" left");
    } else {
        line.append(Clockwise(done)).append(" done");
    }
    std::fprintf(stderr, "\r\x1b[K%s  %.0fx real time", line.c_str(), speed);
    std::fflush(stderr);
}

void Progress::Clear() {
    if (!drawn)
        return;
    std::fputs("\r\x1b[K", stderr);
    std::fflush(stderr);
    drawn = false;
}

}  // namespace Quorvan::Tools
