#include "plugins/ui/widgets/Segments.h"

#include <algorithm>

namespace Quorvan::Ui {

Segments::Segments(const Rect& place, Stage& face, std::unique_ptr<Control> moved,
                   std::string itsLabel)
    : ControlWidget(place, face, std::move(moved), std::move(itsLabel)) {}

Rect Segments::Row() const {
    const double above = label.empty() ? 0.0 : 16.0;
    return {box.x, box.y + above, box.width, box.height - above};
}

void Segments::Draw(Painter& painter) {
    if (!label.empty())
        painter.Text({box.x, box.y, box.width, 14.0}, label, {Theme::kSmall, Theme::kDim});
    const Rect row = Row();
    painter.Round(row, 4.0, Theme::kRaised);
    const auto names = control->Choices();
    const double width = row.width / static_cast<double>(names.size());
    for (uint32_t i = 0; i < names.size(); ++i) {
        const Rect cell{row.x + width * i, row.y, width, row.height};
        const bool on = i == control->Choice();
        if (on)
            painter.Round(cell.Inset(2.0), 3.0, Theme::kAccent);
        painter.Text(cell.Inset(4.0, 0.0), names[i],
                     {Theme::kSmall, on ? Theme::kWindow : Theme::kDim, on}, Align::Centre);
    }
    DrawRouteBars(painter, row.Inset(4.0, 0.0));
    DrawFocus(painter, row);
}

void Segments::Press(const PointerEvent& event) {
    if (TakeRoute(event))
        return;
    const auto count = static_cast<double>(control->Choices().size());
    const double share = (event.at.x - box.x) / box.width * count;
    const auto choice = static_cast<uint32_t>(std::clamp(share, 0.0, count - 1.0));
    if (choice != control->Choice())
        control->MoveOnce(control->PositionOfChoice(choice));
}

}  // namespace Quorvan::Ui
