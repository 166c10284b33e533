#pragma once

#include <functional>

#include "plugins/ui/model/FaceModel.h"
#include "plugins/ui/panels/Panel.h"
#include "plugins/ui/widgets/Stage.h"

namespace Quorvan::Ui {

/// The seven sources of modulation along the foot.
class SourcesPanel final : public Panel {
public:
    SourcesPanel(FaceModel& faceModel, Stage& face, const std::function<uint32_t()>& chosen,
                 const std::function<void(uint32_t)>& choose);
};

}  // namespace Quorvan::Ui
