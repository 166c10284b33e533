#pragma once

#include <cstdint>

namespace Quorvan::ClapHost {

/// While it lives, its thread's allocations, releases and locks are counted, those of loaded
/// libraries too: the program puts its own functions in front of the C library's. The first one
/// prints where it came from. Does nothing under a sanitizer, which needs that place for itself.
class Trap {
public:
    Trap();
    ~Trap();
    Trap(const Trap&) = delete;
    Trap& operator=(const Trap&) = delete;

    /// Caught in all threads so far.
    static uint64_t Caught();
    static bool Works();
};

}  // namespace Quorvan::ClapHost
