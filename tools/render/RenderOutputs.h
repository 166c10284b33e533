#pragma once

#include <optional>

#include "tools/render/RenderSettings.h"
#include "tools/support/AtomicOutput.h"

namespace Quorvan::Tools {

/// The files that a render writes. None is there before Commit.
class RenderOutputs {
public:
    /// Opens all that are asked for. Throws Failure where one can't be written, two would be one
    /// file, or one would replace a file that the run reads.
    explicit RenderOutputs(const RenderSettings& wanted);

    void Commit();

    /// One of the results goes to standard output.
    static bool UseStandardOutput(const RenderSettings& settings);

    AtomicOutput sound;
    std::optional<AtomicOutput> picture, modulation, preset;
};

}  // namespace Quorvan::Tools
