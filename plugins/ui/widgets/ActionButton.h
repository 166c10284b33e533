#pragma once

#include <functional>

#include "plugins/ui/widgets/Widget.h"

namespace Quorvan::Ui {

/// A button that does something once.
class ActionButton final : public Widget {
public:
    struct Look {
        std::string text;
        bool enabled = true;
        bool lit = false;

        bool operator==(const Look&) const = default;
    };

    /// look is asked for each picture; action gets the button's place.
    ActionButton(const Rect& place, std::function<Look()> look,
                 std::function<void(const Rect&)> action);

    void Draw(Painter& painter) override;
    bool Tick(double seconds) override;
    void Press(const PointerEvent&) override;
    bool Key(const KeyEvent& event) override;
    bool CanFocus() const override { return true; }
    /// Without a ground of its own, text to the left.
    void MakeFlat() { flat = true; }

private:
    std::function<Look()> lookNow;
    std::function<void(const Rect&)> act;
    Look shownLook;
    bool flat = false;
};

}  // namespace Quorvan::Ui
