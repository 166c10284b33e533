#include "tools/manualpictures/Diagram.h"

#include <array>
#include <utility>

namespace Quorvan::Tools {

namespace {

constexpr Canvas::Type kNumbers{12.0, false, Palette::kQuietInk};
constexpr Canvas::Type kNames{13.0, false, Palette::kInk};
constexpr Canvas::Type kTitle{15.0, true, Palette::kInk};
constexpr std::array kColours{Palette::kInput, Palette::kOutput, Palette::kHead,
                              Colour{0.45, 0.36, 0.62}, Colour{0.80, 0.58, 0.10}};

}  // namespace

Colour CurveColour(size_t number) { return kColours[number % kColours.size()]; }

Diagram::Diagram(Canvas& page, const Box& area, const std::string& title, Scale across,
                 Scale upright)
    : canvas(page), box(area), horizontal(std::move(across)), vertical(std::move(upright)) {
    for (const Tick& tick : horizontal.axis.Ticks(horizontal.ticks)) {
        const double x = X(tick.value);
        canvas.Line(x, box.y, x, box.Bottom(), Palette::kGrid);
        canvas.Text(x, box.Bottom() + 17.0, tick.label, kNumbers, Canvas::Align::Centre);
    }
    for (const Tick& tick : vertical.axis.Ticks(vertical.ticks)) {
        const double y = Y(tick.value);
        canvas.Line(box.x, y, box.Right(), y, Palette::kGrid);
        canvas.Text(box.x - 7.0, y + 4.0, tick.label, kNumbers, Canvas::Align::Right);
    }
    canvas.Outline(box, Palette::kFrame);
    canvas.Text(box.x + 0.5 * box.width, box.Bottom() + 36.0, horizontal.name, kNames,
                Canvas::Align::Centre);
    canvas.UpwardText(box.x - 50.0, box.y + 0.5 * box.height, vertical.name, kNames);
    canvas.Text(box.x, box.y - 9.0, title, kTitle);
}

void Diagram::Curve(const std::vector<double>& x, const std::vector<double>& y,
                    const Colour& colour, double width) const {
    canvas.ClipTo(box);
    cairo_t* const context = canvas.Context();
    cairo_set_source_rgba(context, colour.red, colour.green, colour.blue, colour.alpha);
    cairo_set_line_width(context, width);
    cairo_set_line_join(context, CAIRO_LINE_JOIN_BEVEL);
    cairo_new_path(context);
    for (size_t i = 0; i < x.size(); ++i)
        cairo_line_to(context, X(x[i]), Y(y[i]));
    cairo_stroke(context);
    canvas.ClipNothing();
}

void Diagram::HalfDot(double x, double y, bool right, const Colour& colour, double radius) const {
    canvas.HalfDisc(X(x), Y(y), radius, right, colour);
}

void Diagram::Note(double x, double y, const std::string& text, const Colour& colour) const {
    canvas.Text(X(x), Y(y), text, {13.0, false, colour});
}

void Diagram::Moment(double x, const std::string& text) const {
    canvas.DashedLine(X(x), box.y, X(x), box.Bottom(), Palette::kQuietInk);
    canvas.Text(X(x) + 5.0, box.y + 15.0, text, kNumbers);
}

void Diagram::Key(const std::vector<std::string>& names) const {
    double right = box.Right();
    for (size_t k = names.size(); k > 0; --k) {
        canvas.Text(right, box.y - 9.0, names[k - 1], kNames, Canvas::Align::Right);
        right -= canvas.TextWidth(names[k - 1], kNames) + 7.0;
        canvas.Line(right - 18.0, box.y - 13.0, right, box.y - 13.0, CurveColour(k - 1), 3.0);
        right -= 34.0;
    }
}

}  // namespace Quorvan::Tools
