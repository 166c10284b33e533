#include "tools/picture/TextLayout.h"

#include <cmath>

namespace Quorvan::Tools {

TextLayout::TextLayout(cairo_t* page, const std::string& text, const Canvas::Type& type)
    : context(page), layout(pango_cairo_create_layout(page)) {
    PangoFontDescription* const font = pango_font_description_from_string("sans-serif");
    pango_font_description_set_absolute_size(font, type.size * PANGO_SCALE);
    pango_font_description_set_weight(font, type.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    pango_layout_set_font_description(layout.get(), font);
    pango_font_description_free(font);
    pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
    char* const valid = g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()));
    pango_layout_set_text(layout.get(), valid, -1);
    g_free(valid);
}

double TextLayout::Width() const {
    PangoRectangle logical{};
    pango_layout_get_extents(layout.get(), nullptr, &logical);
    return static_cast<double>(logical.width) / PANGO_SCALE;
}

void TextLayout::Fit(double width) {
    if (Width() <= width)
        return;
    pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_MIDDLE);
    pango_layout_set_width(layout.get(), static_cast<int>(std::floor(width * PANGO_SCALE)));
}

void TextLayout::Show(double x, double y) {
    PangoRectangle logical{};
    pango_layout_get_extents(layout.get(), nullptr, &logical);
    const double left = static_cast<double>(logical.x) / PANGO_SCALE;
    const double base = static_cast<double>(pango_layout_get_baseline(layout.get())) / PANGO_SCALE;
    cairo_move_to(context, x - left, y - base);
    pango_cairo_show_layout(context, layout.get());
}

}  // namespace Quorvan::Tools
