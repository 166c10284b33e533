#pragma once

#include "host/state/Preset.h"
#include "tools/render/RenderSettings.h"

namespace Quorvan::Tools {

/// A sound as it stands in an engine, with the words of a preset for a file: the file's name, tags
/// and tempo of the origin, and its description, or what --set has made of it.
Host::Preset SavedPreset(Host::Preset sound, const Host::Preset& origin,
                         const RenderSettings& settings);

}  // namespace Quorvan::Tools
