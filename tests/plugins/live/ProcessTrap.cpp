// Put in front of a JACK client's libraries (LD_PRELOAD), it sets the trap around the client's
// process callback, measures it, and says at the end what was found.

#include <dlfcn.h>
#include <jack/jack.h>
#include <sys/resource.h>
#include <time.h>

#include <algorithm>
#include <cstdio>

#include "plugins/claphost/Trap.h"

namespace {

JackProcessCallback process = nullptr;
void* client = nullptr;
double rate = 1.0;

double Seconds(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}
/// How often this thread has given the processor away, as who waits for something does.
long Waits() {
    rusage used{};
    getrusage(RUSAGE_THREAD, &used);
    return used.ru_nvcsw;
}

struct Report {
    unsigned long buffers = 0, late = 0, lateOfItsOwn = 0;
    double most = 0.0;  ///< time of the processor that one took, in its own length
    ~Report() {
        const auto caught = static_cast<unsigned long>(Quorvan::ClapHost::Trap::Caught());
        std::fprintf(stderr,
                     "%lu buffers, %lu allocations or locks, %lu late, %lu of its own making; %.1f "
                     "%% of their time at most\n",
                     buffers, caught, late, lateOfItsOwn, 100.0 * most);
    }
} report;

int Process(jack_nframes_t frames, void*) {
    const long waits = Waits();
    const double began = Seconds(CLOCK_MONOTONIC), worked = Seconds(CLOCK_THREAD_CPUTIME_ID);
    const int result = Quorvan::ClapHost::Trapped([&] { return process(frames, client); });
    const double work = (Seconds(CLOCK_THREAD_CPUTIME_ID) - worked) * rate / frames;
    const bool isLate = (Seconds(CLOCK_MONOTONIC) - began) * rate > frames;
    report.late += isLate;
    report.lateOfItsOwn += work > 1.0 || (isLate && Waits() > waits);
    report.most = std::max(report.most, work);
    ++report.buffers;
    return result;
}

}  // namespace

extern "C" int jack_set_process_callback(jack_client_t* jack, JackProcessCallback call,
                                         void* argument) {
    static auto* const next = reinterpret_cast<decltype(&jack_set_process_callback)>(
        dlsym(RTLD_NEXT, "jack_set_process_callback"));
    process = call;
    client = argument;
    rate = jack_get_sample_rate(jack);
    return next(jack, Process, nullptr);
}
