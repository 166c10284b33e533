#pragma once

#include <optional>
#include <string>

#include "tools/picture/PictureData.h"
#include "tools/render/RenderSettings.h"
#include "tools/render/Summary.h"
#include "tools/render/TempoMap.h"

namespace Quorvan::Tools {

/// The part of a render that its picture is to show. Throws Failure where there is no such part.
PictureData::Section SectionOf(const RenderSettings& settings, const TempoMap& song);

/// Tells a picture what was rendered, how it came out, and in which form to show it. song has to
/// outlive it.
void Caption(PictureData& picture, const RenderSettings& settings, const Summary& summary,
             const TempoMap& song);

/// The sentence for a section with no sound in it.
std::optional<std::string> EmptyPictureWarning(const PictureData& picture);

}  // namespace Quorvan::Tools
