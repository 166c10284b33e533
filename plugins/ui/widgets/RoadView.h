#pragma once

#include <array>
#include <functional>
#include <string>

#include "plugins/ui/widgets/Widget.h"

namespace Quorvan::Ui {

/// The road of the signal with the places where two slots can stand: in the loop, on the grains
/// alone, behind the mix. A slot is dragged to another place; on the keyboard Up and Down choose
/// one, Left and Right move it.
class RoadView final : public Widget {
public:
    static constexpr uint32_t kSlots = 2, kPlaces = 3;
    /// In the order of the road.
    enum Place : uint32_t { kLoop, kGrains, kBehindMix };

    struct Actions {
        std::function<uint32_t(uint32_t slot)> place;
        std::function<std::string(uint32_t slot)> name;
        std::function<bool(uint32_t slot)> works;  ///< neither empty nor bypassed
        std::function<void(uint32_t slot, uint32_t place)> move;
        std::function<Control*(uint32_t slot)> control;
    };

    RoadView(const Rect& place, Actions itsActions);

    void Draw(Painter& painter) override;
    bool Tick(double seconds) override;
    void Press(const PointerEvent& event) override;
    void Drag(const PointerEvent& event) override;
    void Release(const PointerEvent& event) override;
    void DoubleClick(const PointerEvent& event) override { Press(event); }
    bool Key(const KeyEvent& event) override;
    bool CanFocus() const override { return true; }
    Control* ControlAt(Point at) override;

private:
    Rect Station(uint32_t place) const;
    Rect Chip(uint32_t slot) const;
    int SlotAt(Point at) const;
    void DrawWays(Painter& painter) const;
    void DrawChip(Painter& painter, uint32_t slot, const Rect& chip) const;

    struct Shown {
        uint32_t place = kPlaces;
        std::string name;
        bool works = false;
        bool operator==(const Shown&) const = default;
    };

    Actions actions;
    std::array<Shown, kSlots> shown;
    uint32_t chosen = 0;  ///< by the keyboard
    int held = -1;
    bool moved = false;
    Point grip, pointer;
};

}  // namespace Quorvan::Ui
