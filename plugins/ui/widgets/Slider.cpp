#include "plugins/ui/widgets/Slider.h"

namespace Quorvan::Ui {

Slider::Slider(const Rect& place, Stage& face, std::unique_ptr<Control> moved, std::string itsLabel,
               const Colour& fill)
    : ControlWidget(place, face, std::move(moved), std::move(itsLabel)), colour(fill) {}

void Slider::Draw(Painter& painter) {
    const double position = static_cast<double>(control->Position());
    painter.Round(box, 4.0, hovered ? Theme::kRaisedHover : Theme::kRaised);
    painter.Clip({box.x, box.y, box.width * position, box.height});
    painter.Round(box, 4.0, colour);
    painter.Unclip();
    painter.Text({box.x + 8.0, box.y, 0.5 * box.width, box.height}, label,
                 {Theme::kSmall, Theme::kText});
    painter.Text({box.x + 0.5 * box.width, box.y, 0.5 * box.width - 8.0, box.height},
                 control->Text(), {Theme::kSmall, Theme::kText}, Align::Right);
    DrawRouteBars(painter, box);
    DrawFocus(painter, box);
}

}  // namespace Quorvan::Ui
