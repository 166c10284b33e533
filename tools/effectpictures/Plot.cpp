#include "tools/effectpictures/Plot.h"

#include <array>

#include "tools/support/AtomicOutput.h"

namespace Quorvan::Tools {

namespace {

constexpr int kWidth = 760;  // pixels
constexpr int kHeight = 340;
constexpr Box kArea{84.0, 40.0, 652.0, 244.0};
constexpr size_t kTicks = 8;

constexpr Canvas::Type kNumbers{12.0, false, Palette::kQuietInk};
constexpr Canvas::Type kNames{13.0, false, Palette::kInk};
constexpr Canvas::Type kTitle{15.0, true, Palette::kInk};

/// Of the curves, in their order.
constexpr std::array kColours{Palette::kInput, Palette::kOutput, Palette::kHead,
                              Palette::kQuietInk};

double X(const Axis& axis, double value) { return kArea.x + kArea.width * axis.Place(value); }
double Y(const Axis& axis, double value) {
    return kArea.Bottom() - kArea.height * axis.Place(value);
}

}  // namespace

void Plot::DrawAxes(Canvas& page) const {
    for (const Tick& tick : across.axis.Ticks(kTicks)) {
        const double x = X(across.axis, tick.value);
        page.Line(x, kArea.y, x, kArea.Bottom(), Palette::kGrid);
        page.Text(x, kArea.Bottom() + 18.0, tick.label, kNumbers, Canvas::Align::Centre);
    }
    for (const Tick& tick : upright.axis.Ticks(kTicks)) {
        const double y = Y(upright.axis, tick.value);
        page.Line(kArea.x, y, kArea.Right(), y, Palette::kGrid);
        page.Text(kArea.x - 8.0, y + 4.0, tick.label, kNumbers, Canvas::Align::Right);
    }
    page.Text(kArea.x + 0.5 * kArea.width, kArea.Bottom() + 40.0, across.name, kNames,
              Canvas::Align::Centre);
    page.UpwardText(22.0, kArea.y + 0.5 * kArea.height, upright.name, kNames);
    page.Text(kArea.x, kArea.y - 14.0, title, kTitle);
}

void Plot::DrawCurve(Canvas& page, const Curve& curve, const Colour& colour) const {
    cairo_t* const context = page.Context();
    cairo_set_source_rgba(context, colour.red, colour.green, colour.blue, colour.alpha);
    cairo_set_line_width(context, 1.5);
    cairo_set_line_join(context, CAIRO_LINE_JOIN_BEVEL);  // peaks keep their height
    cairo_new_path(context);
    for (size_t i = 0; i < curve.x.size(); ++i)
        cairo_line_to(context, X(across.axis, curve.x[i]), Y(upright.axis, curve.y[i]));
    cairo_stroke(context);
}

void Plot::DrawLegend(Canvas& page) const {
    double right = kArea.Right();
    for (size_t k = curves.size(); k > 0; --k) {
        const std::string& name = curves[k - 1].name;
        page.Text(right, kArea.y - 14.0, name, kNames, Canvas::Align::Right);
        right -= page.TextWidth(name, kNames) + 8.0;
        page.Line(right - 20.0, kArea.y - 19.0, right, kArea.y - 19.0, kColours[k - 1], 3.0);
        right -= 38.0;
    }
}

void Plot::Save(const std::string& file) const {
    Canvas page(kWidth, kHeight);
    DrawAxes(page);
    page.ClipTo(kArea);
    for (size_t k = 0; k < curves.size(); ++k)
        DrawCurve(page, curves[k], kColours[k % kColours.size()]);
    page.ClipNothing();
    page.Outline(kArea, Palette::kFrame);
    DrawLegend(page);
    AtomicOutput output(file, true);
    page.Save(output);
    output.Commit();
}

}  // namespace Quorvan::Tools
