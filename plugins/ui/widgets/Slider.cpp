#include "plugins/ui/widgets/Slider.h"

namespace Quorvan::Ui {

Slider::Slider(const Rect& place, Stage& face, std::unique_ptr<Control> moved, std::string itsLabel,
               const Colour& fill)
    : ControlWidget(place, face, std::move(moved), std::move(itsLabel)), colour(fill) {}

void Slider::Draw(Painter& painter) {
    const double position = static_cast<double>(control->Position());
    const Influence influence = control->Influences();
    painter.Round(box, 4.0, hovered ? Theme::kRaisedHover : Theme::kRaised);
    painter.Clip({box.x, box.y, box.width * position, box.height});
    painter.Round(box, 4.0, colour);
    painter.Unclip();
    painter.Text({box.x + 8.0, box.y, 0.55 * box.width, box.height}, label,
                 {Theme::kSmall, Theme::kText});
    painter.Text({box.x + 0.6 * box.width, box.y, 0.4 * box.width - 8.0, box.height},
                 control->Text(), {Theme::kSmall, Theme::kText}, Align::Right);
    for (uint32_t i = 0; i < std::min(influence.count, 2u); ++i) {
        const double end =
            std::clamp(position + static_cast<double>(influence.routes[i].amount), 0.0, 1.0);
        painter.Fill({box.x + box.width * std::min(position, end), box.Bottom() - 2.0 - 2.0 * i,
                      box.width * std::abs(end - position), 2.0},
                     Theme::Source(influence.routes[i].source));
    }
    if (influence.count > 0)
        painter.Disc(
            {box.x + box.width * static_cast<double>(influence.present), box.Bottom() - 2.0}, 3.0,
            Theme::Source(influence.routes[0].source));
    DrawFocus(painter, box);
}

}  // namespace Quorvan::Ui
