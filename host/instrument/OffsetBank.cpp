#include "host/instrument/OffsetBank.h"

#include <algorithm>

namespace Quorvan::Host {

void OffsetBank::Clear() {
    offsets.fill(0.0f);
    moved.fill(kUnassigned);
    inUse = false;
}

float OffsetBank::Of(uint32_t index) const {
    float sum = 0.0f;
    for (uint32_t id = 0; inUse && id < kHostControlRoom; ++id)
        if (moved[id] == index)
            sum += offsets[id];
    return sum;
}

void OffsetBank::CountUse() {
    inUse =
        std::any_of(offsets.begin(), offsets.end(), [](float offset) { return offset != 0.0f; });
}

}  // namespace Quorvan::Host
