#pragma once

#include "plugins/ui/panels/TablePanel.h"
#include "plugins/ui/widgets/BarEditor.h"
#include "plugins/ui/widgets/DrawnView.h"

namespace Quorvan::Ui {

/// Which pitches the scale allows, which one is set, and those that sound; a click sets one.
DrawnView::Actions ScaleKeyboard(FaceModel& model);
/// The envelope of a grain as the processor works it out; dragged across to bend it.
DrawnView::Actions ShapeCurve(FaceModel& model);
/// The pattern of the beat mode: silent, or a multiplier.
BarEditor::Actions BeatSteps(FaceModel& model);
/// The grains that sound, from left to right and by their level; dragged to move the position.
DrawnView::Actions StereoField(FaceModel& model);
/// How many grains sound, and how many starts there are in a second.
DrawnView::Actions GrainCount(FaceModel& model);
/// Where the spatialiser is and was; dragged to set the place around which it runs.
DrawnView::Actions SpacePad(FaceModel& model);

}  // namespace Quorvan::Ui
