#include "plugins/ui/widgets/SourceTile.h"

#include <cmath>

namespace Quorvan::Ui {

SourceTile::SourceTile(const Rect& place, Stage& face, uint32_t itsSource, std::string itsName,
                       Actions itsActions)
    : Widget(place),
      stage(face),
      source(itsSource),
      name(std::move(itsName)),
      actions(std::move(itsActions)) {}

bool SourceTile::Tick(double) {
    fresh.clear();
    actions.listen(fresh);
    bool moved = history.Take(fresh);
    const uint32_t routes = actions.routes();
    const bool chosen = actions.chosen();
    moved |= routes != shownRoutes || chosen != shownChosen;
    shownRoutes = routes;
    shownChosen = chosen;
    return moved;
}

void SourceTile::Draw(Painter& painter) {
    const Colour colour = Theme::Source(source);
    painter.Round(box, 8.0, hovered ? Theme::kRaised : Theme::kPanel);
    if (shownChosen)
        painter.RoundLine(box, 8.0, colour, 1.5);
    painter.Disc({box.x + 15.0, box.y + 15.0}, 4.0, colour);
    painter.Text({box.x + 26.0, box.y + 6.0, box.width - 60.0, 18.0}, name,
                 {Theme::kSmall, Theme::kText, true});
    painter.Text({box.Right() - 34.0, box.y + 6.0, 24.0, 18.0}, std::to_string(shownRoutes),
                 {Theme::kSmall, shownRoutes > 0 ? colour : Theme::kDim}, Align::Right);
    const Rect scope{box.x + 10.0, box.y + 30.0, box.width - 20.0,
                     box.height - 38.0 - actions.foot};
    const double reach = (actions.foot > 0.0 ? 1.0 : 0.5) * scope.height;
    const double zero = scope.y + reach;
    painter.Fill({scope.x, painter.Snap(zero), scope.width, 1.0}, Theme::kLine);
    const std::vector<Point> line = history.Line(scope, zero, reach);
    if (line.size() > 1)
        painter.Path(line, colour, 1.5);
    if (focused)
        painter.RoundLine(box, 8.0, Theme::kFocus, 1.5);
}

void SourceTile::Press(const PointerEvent& event) {
    pressed = event.at;
    carrying = false;
}

void SourceTile::Drag(const PointerEvent& event) {
    carrying |= std::hypot(event.at.x - pressed.x, event.at.y - pressed.y) > 5.0;
    if (carrying)
        stage.CarrySource(source, event.at);
}

void SourceTile::Release(const PointerEvent& event) {
    if (carrying)
        stage.DropSource(source, event.at);
    else if (event.button == Button::Left)
        actions.choose();
    carrying = false;
}

bool SourceTile::Key(const KeyEvent& event) {
    if (event.key != Key::Enter)
        return false;
    actions.choose();
    return true;
}

}  // namespace Quorvan::Ui
