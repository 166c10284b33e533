#pragma once

#include <cairo.h>

#include <functional>
#include <vector>

#include "plugins/ui/look/Geometry.h"

namespace Quorvan::Ui {

/// A picture of the whole window that is kept, so that only what has changed is drawn again.
/// Invalidate and painting count in logical pixels, everything towards the window in its own.
class Canvas {
public:
    Canvas(double logicalWidth, double logicalHeight);
    ~Canvas();
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    void Resize(int width, int height);
    double Scale() const { return scale; }
    Point ToLogical(Point window) const;
    /// Pixels of the window that an area touches.
    Rect ToWindow(const Rect& area) const;

    void Invalidate(const Rect& area);
    /// What was invalidated since the last call, in pixels of the window.
    std::vector<Rect> TakeNews();
    /// Has paint draw all that is out of date, and shows the part that is wanted.
    void Show(cairo_t* target, const Rect& clip,
              const std::function<void(cairo_t*, const Rect&)>& paint);

private:
    void Release();

    double logicalWidth, logicalHeight;
    int width = 0, height = 0;
    double scale = 1.0, left = 0.0, top = 0.0;
    cairo_surface_t* surface = nullptr;
    std::vector<Rect> old;   ///< areas that are not drawn yet
    std::vector<Rect> news;  ///< areas that the shell has not heard of yet
};

}  // namespace Quorvan::Ui
