#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "plugins/ui/panels/TablePanel.h"

namespace Quorvan::Ui {

using Panels = std::vector<std::unique_ptr<Panel>>;

/// On the tape and below it.
Panels MakeTapeControls(FaceModel& model, Stage& stage);
std::unique_ptr<Panel> MakeLevels(FaceModel& model, Stage& stage);
/// What can stand below the tape, one of them at a time.
Panels MakeGrainPage(FaceModel& model, Stage& stage);
Panels MakeEffectPage(FaceModel& model, Stage& stage);
Panels MakeMatrixPage(FaceModel& model);
/// Number of the source of modulation that is being edited.
using ChosenSource = std::shared_ptr<uint32_t>;
Panels MakeModulationPage(FaceModel& model, Stage& stage, const ChosenSource& chosen);

}  // namespace Quorvan::Ui
