#pragma once

#include <cstdint>

namespace Quorvan::prims {

/// Where random sources get their seeds from: by default the system's clock in microseconds. Read
/// in constructors only.
class ClockSource {
public:
    virtual ~ClockSource() = default;
    virtual uint64_t Microseconds() = 0;
};

/// Puts source in place of the system's clock for the calling thread, and answers what it replaces;
/// null stands for the system's clock. source must outlive its use.
ClockSource* ReplaceClock(ClockSource* source);

/// The clock's low 32 bits as the seed of a random source; never 0, where a xorshift would stand.
uint32_t SeedFromClock();

}  // namespace Quorvan::prims
