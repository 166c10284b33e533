#pragma once

#include "plugins/ui/widgets/ControlWidget.h"

namespace Quorvan::Ui {

/// All names of a choice beside each other, of which one is chosen.
class Segments final : public ControlWidget {
public:
    /// A label stands above, for which place has to have 16 pixels more.
    Segments(const Rect& place, Stage& face, std::unique_ptr<Control> moved, std::string itsLabel);

    void Draw(Painter& painter) override;
    void Press(const PointerEvent& event) override;
    void DoubleClick(const PointerEvent& event) override { Press(event); }

private:
    Rect Row() const;
};

}  // namespace Quorvan::Ui
