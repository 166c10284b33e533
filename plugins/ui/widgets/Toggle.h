#pragma once

#include "plugins/ui/widgets/ControlWidget.h"

namespace Quorvan::Ui {

/// A switch: a button that is lit while it is on.
class Toggle final : public ControlWidget {
public:
    Toggle(const Rect& place, Stage& face, std::unique_ptr<Control> moved, std::string itsLabel,
           const Colour& lit = Theme::kOn);

    /// What counts is that it moves, not where it stands: it is never lit.
    void MakeTrigger() { isTrigger = true; }
    void Draw(Painter& painter) override;
    void Press(const PointerEvent& event) override;
    void DoubleClick(const PointerEvent& event) override { Press(event); }
    bool Key(const KeyEvent& event) override;

private:
    void Turn();

    Colour colour;
    bool isTrigger = false;
};

}  // namespace Quorvan::Ui
