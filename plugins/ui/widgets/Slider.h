#pragma once

#include "plugins/ui/widgets/ControlWidget.h"

namespace Quorvan::Ui {

/// A bar that fills from the left, with name and value in it.
class Slider final : public ControlWidget {
public:
    Slider(const Rect& place, Stage& face, std::unique_ptr<Control> moved, std::string itsLabel,
           const Colour& fill = Theme::kTrack);

    void Draw(Painter& painter) override;

protected:
    double DragTravel() const override { return box.width; }
    bool DragsAcross() const override { return true; }

private:
    Colour colour;
};

}  // namespace Quorvan::Ui
