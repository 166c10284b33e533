#pragma once

#include <cstdint>
#include <limits>

namespace Quorvan::Tools {

/// How far a render goes on behind the end of its input. In frames.
struct TailPlan {
    uint64_t limit = std::numeric_limits<uint64_t>::max();  ///< the longest tail
    uint64_t fade = 0;       ///< the last frames ahead of the limit, for a sound that reaches it
    uint64_t nearLimit = 0;  ///< a sound within the last so many frames has reached it
    bool isExact = false;    ///< limit is the tail's length, and the fade comes in any case
    uint64_t settled = 0;    ///< frame of the last change of the sound: silence counts from there
};

/// How a tail has ended.
enum class TailEnd : uint8_t {
    Asked,    ///< where it was asked to
    Silence,  ///< with the last audible frame
    Fade,     ///< still sounding at the limit, and faded out ahead of it
    Cut       ///< still sounding at the limit
};

}  // namespace Quorvan::Tools
