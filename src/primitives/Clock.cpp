#include "primitives/Clock.h"

#include <chrono>

namespace Quorvan::prims {

namespace {

thread_local ClockSource* replacement = nullptr;

uint64_t SystemMicroseconds() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<uint64_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(now).count());
}

}  // namespace

ClockSource* ReplaceClock(ClockSource* source) {
    ClockSource* const before = replacement;
    replacement = source;
    return before;
}

uint32_t SeedFromClock() {
    const uint64_t now =
        replacement != nullptr ? replacement->Microseconds() : SystemMicroseconds();
    const auto seed = static_cast<uint32_t>(now);
    return seed != 0 ? seed : 1;
}

}  // namespace Quorvan::prims
