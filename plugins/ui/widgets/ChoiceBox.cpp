#include "plugins/ui/widgets/ChoiceBox.h"

namespace Quorvan::Ui {

ChoiceBox::ChoiceBox(const Rect& place, Stage& face, std::unique_ptr<Control> moved,
                     std::string itsLabel, Label where)
    : ControlWidget(place, face, std::move(moved), std::move(itsLabel)), labelPlace(where) {}

Rect ChoiceBox::Field() const {
    switch (labelPlace) {
        case Label::Above:
            return {box.x, box.y + 16.0, box.width, box.height - 16.0};
        case Label::Left:
            return {box.x + 0.45 * box.width, box.y, 0.55 * box.width, box.height};
        default:
            return box;
    }
}

void ChoiceBox::Draw(Painter& painter) {
    const Rect field = Field();
    if (labelPlace == Label::Above)
        painter.Text({box.x, box.y, box.width, 14.0}, label, {Theme::kSmall, Theme::kDim});
    if (labelPlace == Label::Left)
        painter.Text({box.x, box.y, 0.45 * box.width - 4.0, box.height}, label,
                     {Theme::kSmall, Theme::kDim});
    painter.Round(field, 4.0, hovered ? Theme::kRaisedHover : Theme::kRaised);
    painter.Text({field.x + 8.0, field.y, field.width - 24.0, field.height}, control->Text(),
                 {Theme::kSmall, Theme::kText});
    painter.Arrow({field.Right() - 10.0, field.y + 0.5 * field.height - 0.5}, 3.5, 0.5,
                  Theme::kDim);
    DrawRouteBars(painter, field.Inset(4.0, 0.0));
    DrawFocus(painter, field);
}

void ChoiceBox::Open() {
    std::vector<MenuItem> items;
    const auto choices = control->Choices();
    for (uint32_t i = 0; i < choices.size(); ++i) {
        MenuItem item;
        item.text = choices[i];
        item.ticked = i == control->Choice();
        item.action = [this, i] { control->MoveOnce(control->PositionOfChoice(i)); };
        items.push_back(std::move(item));
    }
    stage.OpenMenu(Field(), std::move(items));
}

void ChoiceBox::Press(const PointerEvent& event) {
    if (!TakeRoute(event))
        Open();
}

bool ChoiceBox::Key(const KeyEvent& event) {
    if (event.key != Key::Enter)
        return ControlWidget::Key(event);
    Open();
    return true;
}

}  // namespace Quorvan::Ui
