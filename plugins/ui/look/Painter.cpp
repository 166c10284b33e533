#include "plugins/ui/look/Painter.h"

#include <cmath>
#include <numbers>

namespace Quorvan::Ui {

namespace {

constexpr double kTurn = 2.0 * std::numbers::pi;

/// Made once for the process: choosing a face by its name asks the font library each time.
cairo_font_face_t* FontFace(bool bold) {
    static cairo_font_face_t* const faces[2]{
        cairo_toy_font_face_create("Inter", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL),
        cairo_toy_font_face_create("Inter", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD)};
    return faces[bold ? 1 : 0];
}

/// Cut before one of UTF-8's following bytes is none.
void DropLastSign(std::string& text) {
    while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xc0u) == 0x80u)
        text.pop_back();
    if (!text.empty())
        text.pop_back();
}

}  // namespace

Painter::Painter(cairo_t* target, double pixelScale, std::vector<PlacedText>* log)
    : context(target), scale(pixelScale), texts(log) {
    cairo_font_options_t* const options = cairo_font_options_create();
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_set_font_options(context, options);
    cairo_font_options_destroy(options);
}

void Painter::Use(const Colour& colour) {
    cairo_set_source_rgba(context, colour.red, colour.green, colour.blue, colour.alpha);
}

double Painter::Snap(double logical) const { return std::round(logical * scale) / scale; }

void Painter::Fill(const Rect& box, const Colour& colour) {
    Use(colour);
    cairo_rectangle(context, box.x, box.y, box.width, box.height);
    cairo_fill(context);
}

void Painter::RoundPath(const Rect& box, double radius) {
    const double r = std::min({radius, 0.5 * box.width, 0.5 * box.height});
    cairo_new_sub_path(context);
    cairo_arc(context, box.Right() - r, box.y + r, r, -0.25 * kTurn, 0.0);
    cairo_arc(context, box.Right() - r, box.Bottom() - r, r, 0.0, 0.25 * kTurn);
    cairo_arc(context, box.x + r, box.Bottom() - r, r, 0.25 * kTurn, 0.5 * kTurn);
    cairo_arc(context, box.x + r, box.y + r, r, 0.5 * kTurn, 0.75 * kTurn);
    cairo_close_path(context);
}

void Painter::Round(const Rect& box, double radius, const Colour& colour) {
    Use(colour);
    RoundPath(box, radius);
    cairo_fill(context);
}

void Painter::RoundLine(const Rect& box, double radius, const Colour& colour, double width) {
    Use(colour);
    RoundPath(box.Inset(0.5 * width), radius);
    cairo_set_line_width(context, width);
    cairo_stroke(context);
}

void Painter::Line(Point from, Point to, const Colour& colour, double width) {
    Use(colour);
    cairo_move_to(context, from.x, from.y);
    cairo_line_to(context, to.x, to.y);
    cairo_set_line_width(context, width);
    cairo_stroke(context);
}

void Painter::Path(std::span<const Point> points, const Colour& colour, double width) {
    Use(colour);
    cairo_new_path(context);
    for (const Point& p : points)
        cairo_line_to(context, p.x, p.y);
    cairo_set_line_width(context, width);
    cairo_set_line_join(context, CAIRO_LINE_JOIN_ROUND);
    cairo_stroke(context);
}

void Painter::Area(std::span<const Point> points, double base, const Colour& colour) {
    if (points.empty())
        return;
    Use(colour);
    cairo_move_to(context, points.front().x, base);
    for (const Point& p : points)
        cairo_line_to(context, p.x, p.y);
    cairo_line_to(context, points.back().x, base);
    cairo_close_path(context);
    cairo_fill(context);
}

void Painter::Arc(Point centre, double radius, double from, double to, const Colour& colour,
                  double width) {
    Use(colour);
    cairo_new_sub_path(context);
    cairo_arc(context, centre.x, centre.y, radius, (std::min(from, to) - 0.25) * kTurn,
              (std::max(from, to) - 0.25) * kTurn);
    cairo_set_line_width(context, width);
    cairo_set_line_cap(context, CAIRO_LINE_CAP_ROUND);
    cairo_stroke(context);
    cairo_set_line_cap(context, CAIRO_LINE_CAP_BUTT);
}

void Painter::Disc(Point centre, double radius, const Colour& colour) {
    Use(colour);
    cairo_new_sub_path(context);
    cairo_arc(context, centre.x, centre.y, radius, 0.0, kTurn);
    cairo_fill(context);
}

void Painter::Ring(Point centre, double radius, const Colour& colour, double width) {
    Use(colour);
    cairo_new_sub_path(context);
    cairo_arc(context, centre.x, centre.y, radius, 0.0, kTurn);
    cairo_set_line_width(context, width);
    cairo_stroke(context);
}

void Painter::Arrow(Point centre, double size, double turns, const Colour& colour) {
    Use(colour);
    cairo_new_path(context);
    for (const double corner : {0.0, 0.38, 0.62}) {
        const double angle = (turns + corner - 0.25) * kTurn;
        cairo_line_to(context, centre.x + size * std::cos(angle),
                      centre.y + size * std::sin(angle));
    }
    cairo_close_path(context);
    cairo_fill(context);
}

void Painter::Choose(const Type& type) {
    cairo_set_font_face(context, FontFace(type.bold));
    cairo_set_font_size(context, type.size);
}

double Painter::TextWidth(std::string_view text, const Type& type) {
    Choose(type);
    cairo_text_extents_t extents;
    cairo_text_extents(context, std::string(text).c_str(), &extents);
    return extents.x_advance;
}

void Painter::Text(const Rect& box, std::string_view text, const Type& type, Align align) {
    if (text.empty())
        return;
    std::string kept(text), shown(text);
    const double wanted = TextWidth(shown, type);
    double width = wanted;
    while (width > box.width && !kept.empty()) {
        DropLastSign(kept);
        shown = kept + "\u2026";
        width = TextWidth(shown, type);
    }
    const double slack = box.width - width;
    const double x = box.x + (align == Align::Left     ? 0.0
                              : align == Align::Centre ? 0.5 * slack
                                                       : slack);
    // Capitals are about 0.73 of the size high, in all faces that are likely.
    const double y = box.y + 0.5 * (box.height + 0.73 * type.size);
    Use(type.colour);
    cairo_move_to(context, x, Snap(y));
    cairo_show_text(context, shown.c_str());
    cairo_new_path(context);
    if (texts != nullptr)
        texts->push_back({box, width, wanted, std::string(text)});
}

double Painter::Paragraph(const Rect& box, std::string_view text, const Type& type,
                          double lineHeight, bool measureOnly) {
    double y = box.y;
    std::string line;
    const auto flush = [&] {
        if (!measureOnly)
            Text({box.x, y, box.width + 1.0, lineHeight}, line, type);
        y += lineHeight;
        line.clear();
    };
    while (!text.empty()) {
        const size_t space = std::min(text.find(' '), text.size());
        const std::string longer =
            line + (line.empty() ? "" : " ") + std::string(text.substr(0, space));
        text.remove_prefix(std::min(space + 1, text.size()));
        if (!line.empty() && TextWidth(longer, type) > box.width) {
            const std::string word = longer.substr(line.size() + 1);
            flush();
            line = word;
        } else
            line = longer;
    }
    if (!line.empty())
        flush();
    return y - box.y;
}

void Painter::Clip(const Rect& box) {
    cairo_save(context);
    cairo_rectangle(context, box.x, box.y, box.width, box.height);
    cairo_clip(context);
}

void Painter::Unclip() { cairo_restore(context); }

}  // namespace Quorvan::Ui
