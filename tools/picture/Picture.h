#pragma once

#include "tools/picture/PictureData.h"
#include "tools/support/AtomicOutput.h"

namespace Quorvan::Tools {

/// Draws a render on one page of 1600 x 1200 pixels: input and output as outlines, the output as a
/// spectrogram, and the grains on the tape, all over the same time axis. Sources of modulation that
/// are to be shown get a panel between the last two, and the page 196 pixels more.
void DrawPicture(const PictureData& data, AtomicOutput& output);

}  // namespace Quorvan::Tools
