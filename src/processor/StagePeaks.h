#pragma once

#include <array>

namespace Quorvan::Processor {

/// Highest levels inside the processor since they were taken last, linear, by side; for meters.
struct StagePeaks {
    std::array<float, 2> wet{};       ///< the wet signal behind its volume, ahead of the mix
    std::array<float, 2> feedback{};  ///< what the loop adds to the input
};

}  // namespace Quorvan::Processor
