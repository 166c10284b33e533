#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/parameters/PresentSettings.h"

namespace Quorvan::Tools {

/// What there is to say of an output that had samples clipped: the gain that would have avoided it.
/// peak is linear, settings those at the end of the render.
std::optional<std::string> ClippingWarning(uint64_t clipped, float peak,
                                           const Host::PresentSettings& settings,
                                           const Host::ParameterCatalog& catalog);

/// What there is to say of a sound whose samples go far above full scale, which is 1. named is how
/// a sentence begins with it.
std::optional<std::string> HotInputWarning(const std::string& named, float peak);

/// And of one with samples that are no numbers.
std::optional<std::string> BadSamplesWarning(const std::string& named, uint64_t count);

}  // namespace Quorvan::Tools
