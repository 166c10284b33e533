// Put in front of a JACK client's libraries (LD_PRELOAD), it sets the trap around the client's
// process callback, and says at the end what was caught.

#include <dlfcn.h>
#include <jack/jack.h>

#include <cstdio>

#include "plugins/claphost/Trap.h"

namespace {

JackProcessCallback process = nullptr;
void* client = nullptr;
unsigned long buffers = 0;

int Process(jack_nframes_t frames, void*) {
    ++buffers;
    return Quorvan::ClapHost::Trapped([&] { return process(frames, client); });
}

struct Teller {
    ~Teller() {
        std::fprintf(stderr, "%lu buffers, %lu allocations or locks\n", buffers,
                     static_cast<unsigned long>(Quorvan::ClapHost::Trap::Caught()));
    }
} teller;

}  // namespace

extern "C" int jack_set_process_callback(jack_client_t* jack, JackProcessCallback call,
                                         void* argument) {
    static auto* const next = reinterpret_cast<decltype(&jack_set_process_callback)>(
        dlsym(RTLD_NEXT, "jack_set_process_callback"));
    process = call;
    client = argument;
    return next(jack, Process, nullptr);
}
