#pragma once

#include "plugins/ui/model/FaceModel.h"
#include "plugins/ui/widgets/DrawnView.h"

namespace Quorvan::Ui {

/// The last seconds of what the envelope follower hears, and of what it makes of that.
DrawnView::Actions FollowerScope(FaceModel& model);

}  // namespace Quorvan::Ui
