#pragma once

#include "presets/FactoryPresets.h"

namespace Quorvan::Host {

/// The files as the build found them, in the order of their names.
std::span<const FactoryPreset> EmbeddedPresets();

}  // namespace Quorvan::Host
