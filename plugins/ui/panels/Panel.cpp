#include "plugins/ui/panels/Panel.h"

namespace Quorvan::Ui {

void Panel::DrawGround(Painter& painter) const {
    if (title.empty())
        return;
    painter.Round(box, 8.0, Theme::kPanel);
    painter.Text({box.x + 16.0, box.y + 8.0, box.width - 32.0, 16.0}, title,
                 {Theme::kBody, Theme::kText, true});
}

}  // namespace Quorvan::Ui
