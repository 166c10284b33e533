#pragma once

#include "plugins/ui/model/FaceModel.h"
#include "plugins/ui/widgets/DrawnView.h"

namespace Quorvan::Ui {

/// The last seconds of what the envelope follower hears, and of what it makes of that.
DrawnView::Actions FollowerScope(FaceModel& model);
/// The last seconds of a source that stays above 0.
DrawnView::Actions SourceScope(FaceModel& model, uint32_t source);

}  // namespace Quorvan::Ui
