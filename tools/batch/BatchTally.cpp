#include "tools/batch/BatchTally.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "tools/support/Numbers.h"

namespace Quorvan::Tools {

namespace {

constexpr auto kPause = std::chrono::milliseconds(200);  // between two looks of the line

std::string Clockwise(double seconds) {
    const auto whole = static_cast<long>(std::max(0.0, seconds));
    char text[48];
    std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
    return text;
}

}  // namespace

BatchTally::BatchTally(std::optional<uint64_t> listBytes, bool wanted)
    : bytes(listBytes), visible(wanted && isatty(STDERR_FILENO) != 0) {}

double BatchTally::Elapsed() const {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void BatchTally::AddSound(double seconds) {
    sound += seconds;
    Show();
}

void BatchTally::AddDone(uint64_t offset, double seconds) {
    ++done;
    reached = std::max(reached, offset);
    engineSeconds += seconds;
    Show();
}

void BatchTally::AddSkipped(uint64_t offset) {
    ++skipped;
    skippedBytes += offset - std::min(reached, offset);
    reached = std::max(reached, offset);
    Show();
}

std::string BatchTally::Counts() const {
    const double elapsed = Elapsed();
    std::string text = Grouped(done) + (done == 1 ? " file, " : " files, ");
    text += Fixed(sound / 3600.0, 2) + " h of sound, ";
    text += Fixed(elapsed > 0.0 ? sound / elapsed : 0.0, 0) + "x real time, ";
    text += Grouped(failed) + (failed == 1 ? " failure" : " failures");
    if (skipped > 0)
        text += ", " + Grouped(skipped) + " skipped";
    return text;
}

void BatchTally::Show() {
    const auto now = Clock::now();
    if (!visible || now - last < kPause)
        return;
    last = now;
    drawn = true;
    std::string line = Counts();
    // Lines that were skipped took no time and tell nothing of those to come.
    if (bytes && reached > skippedBytes && done > 0) {
        const double rest = static_cast<double>(*bytes - std::min(*bytes, reached));
        const double worked = static_cast<double>(reached - skippedBytes);
        line += ", " + Clockwise(Elapsed() * rest / worked) + " left";
    }
    std::fprintf(stderr, "\r\x1b[K%s", line.c_str());
    std::fflush(stderr);
}

void BatchTally::Clear() {
    if (drawn)
        std::fputs("\r\x1b[K", stderr);
    std::fflush(stderr);
    drawn = false;
}

std::string BatchTally::Words(unsigned workers) const {
    const double all = Elapsed() * workers + helpSeconds;
    std::string text = Counts() + ", " + Fixed(Elapsed(), 1) + " s with ";
    text += std::to_string(workers) + (workers == 1 ? " worker" : " workers");
    if (done > 0)
        text += ", " + Fixed(100.0 * engineSeconds / all, 1) + " % of it in engines";
    return text;
}

}  // namespace Quorvan::Tools
