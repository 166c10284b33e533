#pragma once

#include "primitives/Clock.h"

namespace Quorvan::test {

/// Stands in for the system's clock while it lives: all random sources get the same seed.
class FixedClock final : public prims::ClockSource {
public:
    explicit FixedClock(uint32_t seed) : now(seed), before(prims::ReplaceClock(this)) {}
    ~FixedClock() override { prims::ReplaceClock(before); }
    FixedClock(const FixedClock&) = delete;
    FixedClock& operator=(const FixedClock&) = delete;

    uint64_t Microseconds() override { return now; }

private:
    uint32_t now;
    prims::ClockSource* before;
};

}  // namespace Quorvan::test
