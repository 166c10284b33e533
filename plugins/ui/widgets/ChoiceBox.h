#pragma once

#include "plugins/ui/widgets/ControlWidget.h"

namespace Quorvan::Ui {

/// A field that shows one of several names and opens a menu of them. With a label it stands on its
/// left, or above where the field is told to be tall.
class ChoiceBox final : public ControlWidget {
public:
    enum class Label : uint8_t { None, Above, Left };

    ChoiceBox(const Rect& place, Stage& face, std::unique_ptr<Control> moved, std::string itsLabel,
              Label where);

    void Draw(Painter& painter) override;
    void Press(const PointerEvent& event) override;
    void DoubleClick(const PointerEvent& event) override { Press(event); }
    bool Key(const KeyEvent& event) override;

private:
    Rect Field() const;
    void Open();

    Label labelPlace;
};

}  // namespace Quorvan::Ui
