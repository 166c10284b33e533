#pragma once

#include <functional>
#include <utility>
#include <vector>

#include "plugins/ui/widgets/Widget.h"

namespace Quorvan::Ui {

/// What a source moves, by how much: bars about a middle that are dragged across; a cross removes.
/// Keys: Up and Down choose one, Left and Right move it, Delete removes it.
class RouteList final : public Widget {
public:
    struct Route {
        uint32_t row = 0;
        std::string name;
        double amount = 0.0;  ///< -1..1

        bool operator==(const Route&) const = default;
    };
    struct Actions {
        std::function<std::vector<Route>()> routes;
        /// Its amount, with nothing in the middle.
        std::function<Control&(uint32_t row)> control;
        std::function<void(uint32_t row)> remove;
        std::function<Colour()> colour;
    };

    RouteList(const Rect& place, Actions itsActions);

    void Draw(Painter& painter) override;
    bool Tick(double seconds) override;
    void Press(const PointerEvent& event) override;
    void Drag(const PointerEvent& event) override;
    void Release(const PointerEvent&) override {
        if (Control* const one = std::exchange(held, nullptr))
            one->End();
    }
    bool Wheel(const WheelEvent& event) override;
    bool Key(const KeyEvent& event) override;
    bool CanFocus() const override { return !shown.empty(); }
    Point FocusPoint() const override;
    Control* ControlAt(Point at) override;

private:
    static constexpr double kRow = 24.0;
    int RowAt(Point at) const;
    static void Put(Control& control, double position);

    Actions actions;
    std::vector<Route> shown;
    size_t top = 0;
    size_t chosen = 0;  ///< that keys move
    Control* held = nullptr;
    double position = 0.0;
    Point last;
};

}  // namespace Quorvan::Ui
