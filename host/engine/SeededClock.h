#pragma once

#include <cstdint>

#include "primitives/Clock.h"

namespace Quorvan::Host {

/// A clock that shows no time: each look at it gives the next number of a sequence that a seed
/// fixes, so that every random source seeded from it starts somewhere of its own, and the same in
/// every run.
///
/// Method  splitmix64: G. L. Steele, D. Lea, C. H. Flood, "Fast Splittable Pseudorandom Number
///         Generators" (2014). Seeds that differ in one bit give unrelated sequences.
class SeededClock final : public prims::ClockSource {
public:
    explicit SeededClock(uint64_t seed) : state(seed) {}
    uint64_t Microseconds() override;

private:
    uint64_t state;
};

/// Replaces the clock that random sources are seeded from for as long as it lives, on its thread.
class ClockReplacement {
public:
    /// A null source leaves the clock that is in force.
    explicit ClockReplacement(prims::ClockSource* source);
    ~ClockReplacement();
    ClockReplacement(const ClockReplacement&) = delete;
    ClockReplacement& operator=(const ClockReplacement&) = delete;

private:
    bool replaced;
    prims::ClockSource* before = nullptr;
};

}  // namespace Quorvan::Host
