#include "primitives/BlockDelay.h"

#include <algorithm>

#include "primitives/RingStretch.h"

namespace Quorvan::dsp {

void RunBlockDelay(DelayLine& line, uint32_t delay, const float* in, float* out, uint32_t count) {
    const auto frames = static_cast<int32_t>(count);
    const auto late = static_cast<int32_t>(delay);
    // A delay shorter than the block reads what the block itself has written: pieces of its length.
    const int32_t piece = late == 0 ? frames : std::min(late, frames);
    for (int32_t done = 0; done < frames;) {
        const int32_t now = std::min(piece, frames - done);
        CopyFromRing(line, line.writeIndex - late, now, out + done);
        WriteToRing(line, in + done, now);
        done += now;
    }
}

}  // namespace Quorvan::dsp
