#include "plugins/ui/Canvas.h"

#include <cmath>
#include <utility>

namespace Quorvan::Ui {

Canvas::Canvas(double wide, double high) : logicalWidth(wide), logicalHeight(high) {
    Resize(static_cast<int>(wide), static_cast<int>(high));
}

Canvas::~Canvas() { Release(); }

void Canvas::Release() {
    if (surface != nullptr)
        cairo_surface_destroy(surface);
    surface = nullptr;
}

void Canvas::Resize(int wide, int high) {
    wide = std::max(1, wide);
    high = std::max(1, high);
    if (wide == width && high == height)
        return;
    width = wide;
    height = high;
    scale = std::min(width / logicalWidth, height / logicalHeight);
    left = std::floor(0.5 * (width - scale * logicalWidth));
    top = std::floor(0.5 * (height - scale * logicalHeight));
    Release();
    surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
    old.clear();
    news.clear();
    Invalidate({0.0, 0.0, logicalWidth, logicalHeight});
    news = {{0.0, 0.0, static_cast<double>(width), static_cast<double>(height)}};
}

Point Canvas::ToLogical(Point window) const {
    return {(window.x - left) / scale, (window.y - top) / scale};
}

Rect Canvas::ToWindow(const Rect& area) const {
    const double x = std::floor(left + area.x * scale), y = std::floor(top + area.y * scale);
    return {x, y, std::ceil(left + area.Right() * scale) - x,
            std::ceil(top + area.Bottom() * scale) - y};
}

/// Areas that lie in others, or hold them, are not kept twice.
void Canvas::Invalidate(const Rect& area) {
    const auto isIn = [](const Rect& a, const Rect& b) {
        return a.x >= b.x && a.y >= b.y && a.Right() <= b.Right() && a.Bottom() <= b.Bottom();
    };
    const auto keep = [&](std::vector<Rect>& areas, const Rect& added) {
        for (const Rect& known : areas)
            if (isIn(added, known))
                return;
        std::erase_if(areas, [&](const Rect& known) { return isIn(known, added); });
        areas.push_back(added);
    };
    if (area.IsEmpty())
        return;
    keep(old, area);
    keep(news, ToWindow(area));
}

std::vector<Rect> Canvas::TakeNews() { return std::exchange(news, {}); }

void Canvas::Show(cairo_t* target, const Rect& clip,
                  const std::function<void(cairo_t*, const Rect&)>& paint) {
    if (!old.empty()) {
        cairo_t* const context = cairo_create(surface);
        for (const Rect& area : std::exchange(old, {})) {
            const Rect pixels = ToWindow(area);
            cairo_save(context);
            cairo_rectangle(context, pixels.x, pixels.y, pixels.width, pixels.height);
            cairo_clip(context);
            cairo_translate(context, left, top);
            cairo_scale(context, scale, scale);
            // All that the whole pixels at the edge show as well.
            paint(context, {area.x - 1.0 / scale, area.y - 1.0 / scale, area.width + 2.0 / scale,
                            area.height + 2.0 / scale});
            cairo_restore(context);
        }
        cairo_destroy(context);
    }
    cairo_save(target);
    cairo_rectangle(target, clip.x, clip.y, clip.width, clip.height);
    cairo_set_source_surface(target, surface, 0.0, 0.0);
    cairo_set_operator(target, CAIRO_OPERATOR_SOURCE);
    cairo_fill(target);
    cairo_restore(target);
}

}  // namespace Quorvan::Ui
