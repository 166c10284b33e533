#pragma once

#include <array>
#include <functional>
#include <utility>
#include <vector>

#include "plugins/ui/widgets/Widget.h"

namespace Quorvan::Ui {

/// The whole matrix: destinations in blocks of rows, a cell for each source. Cells are dragged up
/// and down, and emptied by a double click. Keys: arrows choose a cell, Page Up and Page Down move
/// it, Delete empties it.
class MatrixView final : public Widget {
public:
    struct Actions {
        std::function<float(uint32_t source, uint32_t row)> amount;  ///< -1..1
        /// The same as a control, with nothing in its middle.
        std::function<Control&(uint32_t source, uint32_t row)> control;
        std::function<std::string(uint32_t row)> rowName;
        std::function<std::string(uint32_t source)> sourceMark;  ///< a letter above its cells
    };
    static constexpr uint32_t kSources = 7, kRows = 95, kBlocks = 5, kBlockRows = 19;

    MatrixView(const Rect& place, Actions itsActions);

    void Draw(Painter& painter) override;
    bool Tick(double seconds) override;
    void Press(const PointerEvent& event) override;
    void Drag(const PointerEvent& event) override;
    void Release(const PointerEvent&) override {
        if (std::exchange(isHeld, false))
            Of(held).End();
    }
    void DoubleClick(const PointerEvent& event) override;
    bool Wheel(const WheelEvent& event) override;
    bool Key(const KeyEvent& event) override;
    bool CanFocus() const override { return true; }
    Point FocusPoint() const override { return BoxOf(chosen.source, chosen.row).Centre(); }
    Control* ControlAt(Point at) override;

private:
    static constexpr double kCell = 11.0;
    struct Cell {
        uint32_t source = 0, row = 0;
        bool isOne = false;
    };
    Rect BoxOf(uint32_t source, uint32_t row) const;
    Cell At(Point at) const;
    Control& Of(const Cell& cell) const { return actions.control(cell.source, cell.row); }

    Actions actions;
    std::array<std::array<float, kRows>, kSources> shown{};
    Cell held;
    Cell chosen{0, 0, true};  ///< that keys move
    bool isHeld = false;
    double position = 0.0;
    Point last;
};

}  // namespace Quorvan::Ui
