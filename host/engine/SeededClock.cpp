#include "host/engine/SeededClock.h"

namespace Quorvan::Host {

uint64_t SeededClock::Microseconds() {
    state += 0x9e3779b97f4a7c15;
    uint64_t mixed = state;
    mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9;
    mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111eb;
    return mixed ^ (mixed >> 31);
}

ClockReplacement::ClockReplacement(prims::ClockSource* source) : replaced(source != nullptr) {
    if (replaced)
        before = prims::ReplaceClock(source);
}

ClockReplacement::~ClockReplacement() {
    if (replaced)
        prims::ReplaceClock(before);
}

}  // namespace Quorvan::Host
