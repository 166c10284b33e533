#pragma once

#include <functional>

#include "plugins/ui/widgets/Widget.h"

namespace Quorvan::Ui {

/// Bars in a row that are drawn with the pointer.
class BarEditor final : public Widget {
public:
    struct Actions {
        std::function<uint32_t()> count;            ///< bars in use
        std::function<double(uint32_t)> value;      ///< 0..1
        std::function<std::string(uint32_t)> text;  ///< shown in a bar
        std::function<int()> played;                ///< the bar at work; negative or empty: none
        std::function<void(uint32_t)> begin;
        std::function<void(uint32_t, double)> set;
        std::function<void(uint32_t)> end;
    };

    BarEditor(const Rect& place, std::string tip, std::string sentence, Actions itsActions);

    void Draw(Painter& painter) override;
    bool Tick(double seconds) override;
    void Press(const PointerEvent& event) override;
    void Drag(const PointerEvent& event) override;
    void Release(const PointerEvent& event) override;
    std::string TipTitle(Point) override { return title; }
    std::string TipText(Point) override { return help; }

private:
    std::string title, help;
    Actions actions;
    std::vector<double> shown;
    int shownPlayed = -1;
    uint32_t first = 0;  ///< that the gesture began on
};

}  // namespace Quorvan::Ui
