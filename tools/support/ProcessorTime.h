#pragma once

#include <time.h>

namespace Quorvan::Tools {

/// Seconds of processor time that the calling thread has had.
inline double ProcessorSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1.0e-9 * static_cast<double>(now.tv_nsec);
}

}  // namespace Quorvan::Tools
