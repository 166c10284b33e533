#pragma once

#include "primitives/Clock.h"
#include "support/TestSignals.h"

namespace Quorvan::test {

/// Stands in for the system's clock while it lives: each reading is a new number that follows from
/// the seed.
class SeededClock : public prims::ClockSource {
public:
    explicit SeededClock(uint64_t seed) : now(seed), before(prims::ReplaceClock(this)) {}
    ~SeededClock() override { prims::ReplaceClock(before); }
    SeededClock(const SeededClock&) = delete;
    SeededClock& operator=(const SeededClock&) = delete;

    uint64_t Microseconds() override {
        now = now * 6364136223846793005u + 1442695040888963407u;
        return now >> 32;
    }

protected:
    uint64_t now;

private:
    prims::ClockSource* before;
};

/// The same with one reading for ever: all random sources get the same seed.
class FixedClock final : public SeededClock {
public:
    using SeededClock::SeededClock;
    uint64_t Microseconds() override { return now; }
};

}  // namespace Quorvan::test
