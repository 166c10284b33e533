#pragma once

#include <cstdint>
#include <string>

#include "tools/batch/JobWords.h"
#include "tools/render/RenderSettings.h"

namespace Quorvan::Tools {

/// One job of a batch.
struct BatchJob {
    uint64_t line = 0;    ///< in the list, from 1
    uint64_t offset = 0;  ///< bytes of the list up to its end
    RenderSettings settings;
    uint64_t fingerprint = 0;    ///< of its words, the files that it reads, and the version
    bool mayReplaceOwn = false;  ///< an output of the same recipe is a killed run's own

    /// Settings and fingerprint of a job that the list gives as words; parsed are the words' own.
    /// A job that names no seed gets one from its words, so that its sound hangs on nothing else.
    static BatchJob Make(const JobWords& words, RenderSettings parsed);
    /// Whether all files that it writes are there.
    bool IsDone() const;
};

}  // namespace Quorvan::Tools
