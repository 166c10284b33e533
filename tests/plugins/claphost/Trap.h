#pragma once

#include <cstdint>

namespace Quorvan::ClapHost {

/// While it lives, its thread's allocations, releases and locks are counted, those of loaded
/// libraries too: the program puts its own functions in front of the C library's. The first one
/// prints where it came from. Does nothing under a sanitizer, which needs that place for itself.
struct Trap {
    Trap();
    ~Trap();
    Trap(const Trap&) = delete;
    Trap& operator=(const Trap&) = delete;

    static bool IsSet();       ///< in this thread, which is an audio thread then
    static uint64_t Caught();  ///< in all threads so far
    static bool Works();
};

/// As an audio thread does it.
template <class Work>
auto Trapped(Work work) {
    const Trap trap;
    return work();
}

}  // namespace Quorvan::ClapHost
