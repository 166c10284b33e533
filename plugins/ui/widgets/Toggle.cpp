#include "plugins/ui/widgets/Toggle.h"

namespace Quorvan::Ui {

Toggle::Toggle(const Rect& place, Stage& face, std::unique_ptr<Control> moved, std::string itsLabel,
               const Colour& lit)
    : ControlWidget(place, face, std::move(moved), std::move(itsLabel)), colour(lit) {}

void Toggle::Draw(Painter& painter) {
    const Influence influence = control->Influences();
    const bool on = influence.present > 0.5f && !isTrigger;
    painter.Round(box, 4.0, on ? colour : hovered ? Theme::kRaisedHover : Theme::kRaised);
    painter.Text(box.Inset(6.0, 0.0), label,
                 {Theme::kSmall, on ? Theme::kWindow : Theme::kText, on}, Align::Centre);
    DrawRouteBars(painter, box.Inset(4.0, 0.0));
    DrawFocus(painter, box);
}

void Toggle::Turn() { control->MoveOnce(control->Position() > 0.5f ? 0.0f : 1.0f); }

void Toggle::Press(const PointerEvent& event) {
    if (!TakeRoute(event))
        Turn();
}

bool Toggle::Key(const KeyEvent& event) {
    if (event.key != Key::Enter)
        return ControlWidget::Key(event);
    Turn();
    return true;
}

}  // namespace Quorvan::Ui
