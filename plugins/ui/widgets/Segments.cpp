#include "plugins/ui/widgets/Segments.h"

#include <algorithm>

namespace Quorvan::Ui {

Segments::Segments(const Rect& place, Stage& face, std::unique_ptr<Control> moved,
                   std::vector<std::string> shownNames)
    : ControlWidget(place, face, std::move(moved), {}), names(std::move(shownNames)) {
    if (names.empty())
        names.assign(control->Choices().begin(), control->Choices().end());
}

void Segments::Draw(Painter& painter) {
    painter.Round(box, 4.0, Theme::kRaised);
    const double width = box.width / static_cast<double>(names.size());
    for (uint32_t i = 0; i < names.size(); ++i) {
        const Rect cell{box.x + width * i, box.y, width, box.height};
        const bool on = i == control->Choice();
        if (on)
            painter.Round(cell.Inset(2.0), 3.0, Theme::kAccent);
        painter.Text(cell.Inset(4.0, 0.0), names[i],
                     {Theme::kSmall, on ? Theme::kWindow : Theme::kDim, on}, Align::Centre);
    }
    DrawRouteBars(painter, box.Inset(4.0, 0.0));
    DrawFocus(painter, box);
}

void Segments::Press(const PointerEvent& event) {
    if (TakeRoute(event))
        return;
    const double share = (event.at.x - box.x) / box.width * static_cast<double>(names.size());
    const double highest = static_cast<double>(names.size() - 1);
    const auto choice = static_cast<uint32_t>(std::clamp(share, 0.0, highest));
    if (choice != control->Choice())
        control->MoveOnce(control->PositionOfChoice(choice));
}

}  // namespace Quorvan::Ui
