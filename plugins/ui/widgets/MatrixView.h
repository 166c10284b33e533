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
        std::function<float(uint32_t source, uint32_t row)> amount;
        std::function<void(uint32_t source, uint32_t row)> begin;
        std::function<void(uint32_t source, uint32_t row, float amount)> set;
        std::function<void()> end;
        std::function<void(uint32_t source, uint32_t row)> clear;
        std::function<std::string(uint32_t row)> rowName;
        std::function<std::string(uint32_t source)> sourceName;
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
            actions.end();
    }
    void DoubleClick(const PointerEvent& event) override;
    bool Wheel(const WheelEvent& event) override;
    bool Key(const KeyEvent& event) override;
    bool CanFocus() const override { return true; }
    std::string TipTitle(Point at) override;
    std::string TipText(Point) override {
        return "Drag a cell up or down to say how far the source moves it. A double click empties "
               "it.";
    }

private:
    static constexpr double kCell = 11.0;
    struct Cell {
        uint32_t source = 0, row = 0;
        bool isOne = false;
    };
    Rect BoxOf(uint32_t source, uint32_t row) const;
    Cell At(Point at) const;
    void Nudge(const Cell& cell, double by);

    Actions actions;
    std::array<std::array<float, kRows>, kSources> shown{};
    Cell held;
    Cell chosen{0, 0, true};  ///< that keys move
    bool isHeld = false;
    double amount = 0.0;
    Point last;
};

}  // namespace Quorvan::Ui
