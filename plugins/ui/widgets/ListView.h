#pragma once

#include <functional>
#include <string>
#include <vector>

#include "plugins/ui/widgets/Widget.h"

namespace Quorvan::Ui {

/// Lines of text to choose from.
class ListView final : public Widget {
public:
    struct Line {
        std::string text, note;
        bool chosen = false;
        int star = -1;  ///< 0 or 1; -1: none

        bool operator==(const Line&) const = default;
    };
    struct Actions {
        std::function<std::vector<Line>()> lines;
        std::function<void(size_t)> choose, open, star;  ///< open: a double click or Enter
        std::string none;                                ///< said where there are no lines
    };

    ListView(const Rect& place, Actions itsActions);

    /// Brings the chosen line into sight with the next picture.
    void Reveal() { isToReveal = true; }
    void Draw(Painter& painter) override;
    bool Tick(double seconds) override;
    void Press(const PointerEvent& event) override;
    void DoubleClick(const PointerEvent& event) override;
    bool Wheel(const WheelEvent& event) override;
    bool Key(const KeyEvent& event) override;
    bool CanFocus() const override { return true; }

private:
    static constexpr double kRow = 24.0;
    size_t RowsShown() const { return static_cast<size_t>(box.height / kRow); }
    int LineAt(Point at) const;
    void Step(int way);
    void ShowChosen();

    Actions actions;
    std::vector<Line> shown;
    size_t top = 0;
    bool isToReveal = false;
};

}  // namespace Quorvan::Ui
