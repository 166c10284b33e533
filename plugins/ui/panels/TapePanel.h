#pragma once

#include "plugins/ui/model/ParameterControl.h"
#include "plugins/ui/panels/Panel.h"
#include "plugins/ui/widgets/TapeView.h"

namespace Quorvan::Ui {

/// The tape, fed from the instrument.
class TapePanel final : public Panel {
public:
    explicit TapePanel(FaceModel& faceModel);

private:
    bool Look(TapePicture& picture);
    void LookAtSettings(TapePicture& picture) const;
    ParameterControl* Head();
    void Take(ParameterControl* control);
    void MoveHeld(double way);
    void BringHead(double place);
    void MoveHead(double way);

    FaceModel& model;
    ParameterControl spray, position, offset, freeze;
    ParameterControl* held = nullptr;
    double heldValue = 0.0;        ///< where it was seen when it was taken hold of
    float heldModulation = 0.0f;   ///< of that, in positions
    std::array<double, 8> seen{};  ///< settings as they were drawn
};

/// Quarter notes of a note such as "3/2".
double BeatsOfNote(std::string_view note);

}  // namespace Quorvan::Ui
