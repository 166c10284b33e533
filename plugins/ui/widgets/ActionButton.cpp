#include "plugins/ui/widgets/ActionButton.h"

namespace Quorvan::Ui {

ActionButton::ActionButton(const Rect& place, std::function<Look()> look,
                           std::function<void(const Rect&)> action)
    : Widget(place), lookNow(std::move(look)), act(std::move(action)) {}

bool ActionButton::Tick(double) {
    Look look = lookNow();
    if (look == shownLook)
        return false;
    shownLook = std::move(look);
    return true;
}

void ActionButton::Draw(Painter& painter) {
    const Colour ground = shownLook.lit ? Theme::kAccent
                          : hovered     ? Theme::kRaisedHover
                                        : Theme::kRaised;
    if (!flat || hovered || shownLook.lit)
        painter.Round(box, 4.0, ground);
    // What can't be done now may be dim: its place tells what it is.
    const Colour ink = shownLook.lit       ? Theme::kWindow
                       : shownLook.enabled ? Theme::kText
                                           : Theme::kTrack.Towards(Theme::kDim, 0.4);
    painter.Text(box.Inset(flat ? 8.0 : 4.0, 0.0), shownLook.text,
                 {Theme::kSmall, ink, shownLook.lit}, flat ? Align::Left : Align::Centre);
    if (focused)
        painter.RoundLine(box, 4.0, Theme::kFocus, 1.5);
}

void ActionButton::Press(const PointerEvent&) {
    if (lookNow().enabled)
        act(box);
}

bool ActionButton::Key(const KeyEvent& event) {
    if (event.key != Key::Enter)
        return false;
    if (lookNow().enabled)
        act(box);
    return true;
}

}  // namespace Quorvan::Ui
