#pragma once

#include <algorithm>

namespace Quorvan::Ui {

struct Point {
    double x = 0.0, y = 0.0;
};

/// A rectangle; on the face in logical pixels (those of a window at 100 %), towards the shell in
/// pixels of the window. Counts from the upper left.
struct Rect {
    double x = 0.0, y = 0.0, width = 0.0, height = 0.0;

    double Right() const { return x + width; }
    double Bottom() const { return y + height; }
    Point Centre() const { return {x + 0.5 * width, y + 0.5 * height}; }
    bool IsEmpty() const { return width <= 0.0 || height <= 0.0; }
    bool Contains(Point p) const { return p.x >= x && p.x < Right() && p.y >= y && p.y < Bottom(); }
    bool Meets(const Rect& other) const {
        return x < other.Right() && other.x < Right() && y < other.Bottom() && other.y < Bottom();
    }
    Rect Inset(double by) const { return Inset(by, by); }
    Rect Inset(double across, double down) const {
        return {x + across, y + down, std::max(0.0, width - 2.0 * across),
                std::max(0.0, height - 2.0 * down)};
    }
    Rect Shifted(double dx, double dy) const { return {x + dx, y + dy, width, height}; }
    /// The smallest one that holds both.
    Rect With(const Rect& other) const {
        if (IsEmpty())
            return other;
        if (other.IsEmpty())
            return *this;
        const double left = std::min(x, other.x), top = std::min(y, other.y);
        return {left, top, std::max(Right(), other.Right()) - left,
                std::max(Bottom(), other.Bottom()) - top};
    }
};

}  // namespace Quorvan::Ui
