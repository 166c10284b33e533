#pragma once

#include <cstdint>
#include <vector>

#include "tools/render/RenderSettings.h"

namespace Quorvan::Tools {

/// The same render count times, each with a seed of its own: the first with that of the settings,
/// or one of chance, the others with those that follow it, so that --seed gives each of them again.
/// Every file gets the variation's number ahead of its ending, with as many digits as the last one
/// needs: "out-01.wav" of 12. The preset is the same for all and is saved by the first. Throws
/// Failure where a file would be standard output.
std::vector<RenderSettings> Variations(const RenderSettings& settings, uint32_t count);

}  // namespace Quorvan::Tools
