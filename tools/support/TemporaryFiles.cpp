#include "tools/support/TemporaryFiles.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <mutex>
#include <string_view>

#include "host/parameters/Sentence.h"
#include "tools/support/Failure.h"

namespace Quorvan::Tools {

namespace {

constexpr std::array kEndingSignals{SIGINT, SIGTERM, SIGHUP};

/// A path where a handler can read it: memory that nothing moves or frees.
struct Place {
    volatile std::sig_atomic_t taken = 0;
    char path[PATH_MAX] = {};
};
// Each worker of the longest batch can have three jobs in hand with four files each. Untouched
// places take no memory.
std::array<Place, 3080> places;
std::mutex placesLock;  // handlers do without: they end the process

void RemoveAll() {
    for (const Place& place : places) {
        if (place.taken != 0)
            unlink(place.path);
    }
}

/// Uses nothing but what a handler may call.
extern "C" void RemoveAndExit(int signal) {
    constexpr std::string_view message = "\nInterrupted. No file was left unfinished.\n";
    RemoveAll();
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, message.data(), message.size());
    _exit(static_cast<int>(ExitCode::Signal) + signal);
}

/// The reader of a pipe has seen enough: the end that every program takes then, without a word. The
/// signal strikes again when this handler returns.
extern "C" void RemoveAndEnd(int signal) {
    RemoveAll();
    std::signal(signal, SIG_DFL);
    raise(signal);
}

sigset_t EndingSet() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : kEndingSignals)
        sigaddset(&set, signal);
    return set;
}

}  // namespace

void TemporaryFiles::InstallHandlers() {
    struct sigaction action {};
    action.sa_handler = RemoveAndExit;
    action.sa_mask = EndingSet();
    for (const int signal : kEndingSignals)
        sigaction(signal, &action, nullptr);
    action.sa_handler = RemoveAndEnd;
    sigaction(SIGPIPE, &action, nullptr);
    std::signal(SIGXFSZ, SIG_IGN);
}

size_t TemporaryFiles::Add(const std::string& path) {
    const std::lock_guard guard(placesLock);
    const auto free =
        std::find_if(places.begin(), places.end(), [](const Place& p) { return p.taken == 0; });
    if (free == places.end() || path.size() >= sizeof free->path)
        throw Failure(ExitCode::Output,
                      Host::Quoted(path) + " has too long a path; write to a shorter one.");
    std::copy(path.begin(), path.end(), free->path);
    free->path[path.size()] = '\0';
    free->taken = 1;
    return static_cast<size_t>(free - places.begin());
}

void TemporaryFiles::Forget(size_t place) {
    const std::lock_guard guard(placesLock);
    places[place].taken = 0;
}

SignalPause::SignalPause() {
    const sigset_t held = EndingSet();
    pthread_sigmask(SIG_BLOCK, &held, &before);
}

SignalPause::~SignalPause() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }

}  // namespace Quorvan::Tools
