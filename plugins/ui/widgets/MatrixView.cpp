#include "plugins/ui/widgets/MatrixView.h"

#include <algorithm>
#include <cmath>

namespace Quorvan::Ui {

namespace {

constexpr double kHead = 4.0;    ///< free above
constexpr double kNotch = 0.01;  ///< of a control's travel: 2 %

}  // namespace

MatrixView::MatrixView(const Rect& place, Actions itsActions)
    : Widget(place), actions(std::move(itsActions)) {
    shown[0][0] = 2.0f;  // no amount: the first picture is always new
}

Rect MatrixView::BoxOf(uint32_t source, uint32_t row) const {
    const double block = box.width / kBlocks, height = (box.height - kHead) / (kBlockRows + 1);
    const uint32_t column = row / kBlockRows;
    return {box.x + block * column + block - 8.0 - kCell * (kSources - source),
            box.y + kHead + height * (row % kBlockRows + 1), kCell, height};
}

MatrixView::Cell MatrixView::At(Point at) const {
    for (uint32_t row = 0; row < kRows; ++row)
        for (uint32_t source = 0; source < kSources; ++source)
            if (BoxOf(source, row).Contains(at))
                return {source, row, true};
    return {};
}

bool MatrixView::Tick(double) {
    bool moved = false;
    for (uint32_t source = 0; source < kSources; ++source)
        for (uint32_t row = 0; row < kRows; ++row) {
            const float now = actions.amount(source, row);
            moved |= now != shown[source][row];
            shown[source][row] = now;
        }
    return moved;
}

void MatrixView::Draw(Painter& painter) {
    const double block = box.width / kBlocks;
    for (uint32_t column = 0; column < kBlocks; ++column)
        for (uint32_t source = 0; source < kSources; ++source) {
            const Rect below = BoxOf(source, column * kBlockRows);
            painter.Text({below.x, box.y + kHead, below.width, below.height - 1.0},
                         actions.sourceMark(source), {Theme::kSmall, Theme::Source(source)},
                         Align::Centre);
        }
    for (uint32_t row = 0; row < kRows; ++row) {
        const Rect first = BoxOf(0, row);
        const uint32_t column = row / kBlockRows;
        const double left = box.x + block * column;
        painter.Text({left, first.y, first.x - left - 6.0, first.height}, actions.rowName(row),
                     {Theme::kSmall, Theme::kDim});
        for (uint32_t source = 0; source < kSources; ++source) {
            const Rect cell = BoxOf(source, row).Inset(1.0, 1.5);
            painter.Fill(cell, Theme::kLine.Faded(0.6));
            if (focused && source == chosen.source && row == chosen.row)
                painter.RoundLine(cell.Inset(-1.0), 2.0, Theme::kFocus, 1.5);
            const double value = static_cast<double>(shown[source][row]);
            const Colour colour = Theme::Source(source);
            if (value == 0.0) {
                painter.Fill({cell.Centre().x - 1.5, cell.Centre().y - 1.0, 3.0, 2.0},
                             colour.Faded(0.3));
                continue;
            }
            const double half = 0.5 * cell.height, reach = half * std::abs(value);
            painter.Fill(cell, colour.Faded(0.22));
            painter.Fill({cell.x, cell.y + half - (value > 0.0 ? reach : 0.0), cell.width,
                          std::max(reach, 1.5)},
                         colour);
        }
    }
}

void MatrixView::Press(const PointerEvent& event) {
    held = At(event.at);
    isHeld = held.isOne;
    last = event.at;
    if (isHeld) {
        chosen = held;
        position = static_cast<double>(Of(held).Position());
        Of(held).Begin();
    }
}

void MatrixView::Drag(const PointerEvent& event) {
    if (!isHeld)
        return;
    const double way = (last.y - event.at.y) / 240.0;
    last = event.at;
    position = std::clamp(position + way * (event.modifiers.shift ? 0.1 : 1.0), 0.0, 1.0);
    Of(held).Move(static_cast<float>(position));
}

bool MatrixView::Wheel(const WheelEvent& event) {
    const Cell cell = At(event.at);
    if (cell.isOne && event.steps != 0.0)
        Of(cell).MoveOnce(Of(cell).Nudged(kNotch * event.steps, event.modifiers.shift));
    return true;
}

bool MatrixView::Key(const KeyEvent& event) {
    const auto nudge = [&](double way) {
        Of(chosen).MoveOnce(Of(chosen).Nudged(5.0 * kNotch * way, event.modifiers.shift));
        return true;
    };
    const auto choose = [this](uint32_t source, uint32_t row) {
        chosen.source = (chosen.source + source) % kSources;
        chosen.row = (chosen.row + row) % kRows;
        Invalidate();
        return true;
    };
    switch (event.key) {
        case Ui::Key::Left:
            return choose(kSources - 1, chosen.source == 0 ? kRows - kBlockRows : 0);
        case Ui::Key::Right:
            return choose(1, chosen.source + 1 == kSources ? kBlockRows : 0);
        case Ui::Key::Up:
            return choose(0, kRows - 1);
        case Ui::Key::Down:
            return choose(0, 1);
        case Ui::Key::PageUp:
            return nudge(1.0);
        case Ui::Key::PageDown:
            return nudge(-1.0);
        case Ui::Key::Delete:
        case Ui::Key::Backspace:
            return Of(chosen).MoveOnce(Of(chosen).Default()), true;
        default:
            return false;
    }
}

void MatrixView::DoubleClick(const PointerEvent& event) {
    const Cell cell = At(event.at);
    if (cell.isOne)
        Of(cell).MoveOnce(Of(cell).Default());
}

Control* MatrixView::ControlAt(Point at) {
    const Cell cell = At(at);
    return cell.isOne ? &Of(cell) : nullptr;
}

}  // namespace Quorvan::Ui
