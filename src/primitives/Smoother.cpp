#include "primitives/Smoother.h"

#include <algorithm>

namespace Quorvan::dsp {

void Smoother::FillBlock(float* out, uint32_t count) {
    if (IsAtRest()) {
        std::fill_n(out, count / 4 * 4, static_cast<float>(current));
        return;
    }
    for (uint32_t i = 0; i < count; ++i)
        out[i] = Tick();
}

}  // namespace Quorvan::dsp
