#pragma once

#include <vector>

#include "plugins/ui/widgets/Stage.h"
#include "plugins/ui/widgets/Widget.h"

namespace Quorvan::Ui {

/// A list of things to do, over everything else. The face closes it when Done.
class Menu final : public Widget {
public:
    /// room: what it has to stay in.
    Menu(const Rect& anchor, const Rect& room, std::vector<MenuItem> things);

    void Draw(Painter& painter) override;
    void Press(const PointerEvent& event) override;
    void Hover(Point at) override;
    bool Wheel(const WheelEvent& event) override;
    bool Key(const KeyEvent& event) override;
    /// To the next item that begins so.
    bool Text(std::string_view signs) override;
    bool IsDone() const { return done; }

private:
    static constexpr double kRow = 22.0, kPad = 6.0;
    int RowAt(Point at) const;
    void Choose(int row);
    void Step(int way);

    std::vector<MenuItem> items;
    size_t columns = 1, rows = 1;
    int marked = -1;
    bool done = false;
};

}  // namespace Quorvan::Ui
