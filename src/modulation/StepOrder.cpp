#include "modulation/StepOrder.h"

#include <algorithm>

#include "primitives/Xorshift.h"

namespace Quorvan::dsp {

namespace {

int32_t Modulo(int32_t x, int32_t n) { return (x % n + n) % n; }

}  // namespace

void PlaceStep(int32_t loopMode, int32_t count, int32_t cycle, int32_t& step, uint32_t& down) {
    if (loopMode == kForward) {
        step = Modulo(cycle, count);
    } else if (loopMode == kBackward) {
        step = count - Modulo(cycle, count) - 1;
    } else if (loopMode == kBackAndForth) {
        const int32_t way = Modulo(cycle, 2 * count);
        down = way < count ? 0 : 1;
        step = way < count ? way : 2 * count - way - 1;
    }
}

void AdvanceStep(int32_t loopMode, int32_t count, uint32_t& randomState, int32_t& step,
                 uint32_t& down) {
    step = std::min(step, count - 1);
    if (loopMode == kForward) {
        step = (step + 1) % count;
    } else if (loopMode == kBackward) {
        step = (step - 1 + count) % count;
    } else if (loopMode == kBackAndForth) {
        // At an end only the direction changes.
        if (step == (down != 0 ? 0 : count - 1))
            down ^= 1;
        else
            step += down != 0 ? -1 : 1;
    } else {
        // The draw may round up to 1, and the step then to the count.
        const float drawn = prims::XorshiftUniform(randomState) * static_cast<float>(count);
        step = static_cast<int32_t>(drawn) % count;
    }
}

}  // namespace Quorvan::dsp
