#include "tools/picture/Canvas.h"

#include <array>
#include <limits>
#include <new>
#include <numbers>

#include "host/parameters/Sentence.h"
#include "tools/picture/TextLayout.h"
#include "tools/support/Failure.h"

namespace Quorvan::Tools {

namespace {

cairo_status_t Append(void* output, const unsigned char* data, unsigned int length) {
    const int64_t written = static_cast<AtomicOutput*>(output)->Write(data, length);
    return written == static_cast<int64_t>(length) ? CAIRO_STATUS_SUCCESS
                                                   : CAIRO_STATUS_WRITE_ERROR;
}

}  // namespace

Canvas::Canvas(int width, int height)
    : surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height)),
      context(cairo_create(surface)) {
    if (cairo_status(context) != CAIRO_STATUS_SUCCESS) {
        cairo_destroy(context);
        cairo_surface_destroy(surface);
        throw std::bad_alloc();
    }
    Fill({0.0, 0.0, static_cast<double>(width), static_cast<double>(height)}, Palette::kPage);
}

Canvas::~Canvas() {
    cairo_destroy(context);
    cairo_surface_destroy(surface);
}

void Canvas::Use(const Colour& colour) {
    cairo_set_source_rgba(context, colour.red, colour.green, colour.blue, colour.alpha);
}

void Canvas::Fill(const Box& box, const Colour& colour) {
    Use(colour);
    cairo_rectangle(context, box.x, box.y, box.width, box.height);
    cairo_fill(context);
}

void Canvas::Outline(const Box& box, const Colour& colour) {
    Use(colour);
    cairo_set_line_width(context, 1.0);
    // On half pixels lines of one pixel are sharp.
    cairo_rectangle(context, box.x - 0.5, box.y - 0.5, box.width + 1.0, box.height + 1.0);
    cairo_stroke(context);
}

void Canvas::ColourBar(const Box& box, const std::function<Colour(double)>& colourOf) {
    const int rows = static_cast<int>(box.height);
    for (int row = 0; row < rows; ++row)
        Fill({box.x, box.y + row, box.width, 1.0}, colourOf(1.0 - (row + 0.5) / rows));
    Outline(box, Palette::kFrame);
}

void Canvas::Line(double x0, double y0, double x1, double y1, const Colour& colour, double width) {
    Use(colour);
    cairo_set_line_width(context, width);
    cairo_move_to(context, x0, y0);
    cairo_line_to(context, x1, y1);
    cairo_stroke(context);
}

void Canvas::DashedLine(double x0, double y0, double x1, double y1, const Colour& colour) {
    constexpr std::array kDashes{5.0, 4.0};
    cairo_set_dash(context, kDashes.data(), kDashes.size(), 0.0);
    Line(x0, y0, x1, y1, colour, 1.2);
    cairo_set_dash(context, nullptr, 0, 0.0);
}

void Canvas::HalfDisc(double x, double y, double radius, bool right, const Colour& colour) {
    constexpr double kQuarter = 0.5 * std::numbers::pi;
    Use(colour);
    const double from = right ? -kQuarter : kQuarter;
    cairo_new_path(context);
    cairo_arc(context, x, y, radius, from, from + 2.0 * kQuarter);
    cairo_close_path(context);
    cairo_fill(context);
}

double Canvas::TextWidth(const std::string& text, const Type& type) {
    return TextLayout(context, text, type).Width();
}

void Canvas::Text(double x, double y, const std::string& text, const Type& type, Align align) {
    FittedText(x, y, std::numeric_limits<double>::infinity(), text, type, align);
}

double Canvas::FittedText(double x, double y, double width, const std::string& text,
                          const Type& type, Align align) {
    TextLayout layout(context, text, type);
    layout.Fit(width);
    const double taken = layout.Width();
    Use(type.colour);
    const double share = align == Align::Left ? 0.0 : align == Align::Centre ? 0.5 : 1.0;
    layout.Show(x - share * taken, y);
    return taken;
}

void Canvas::UpwardText(double x, double y, const std::string& text, const Type& type) {
    cairo_save(context);
    cairo_translate(context, x, y);
    cairo_rotate(context, -0.5 * std::numbers::pi);
    Text(0.0, 0.0, text, type, Align::Centre);
    cairo_restore(context);
}

void Canvas::ClipTo(const Box& box) {
    cairo_save(context);
    cairo_rectangle(context, box.x, box.y, box.width, box.height);
    cairo_clip(context);
}

void Canvas::ClipNothing() { cairo_restore(context); }

void Canvas::Save(AtomicOutput& output) const {
    const cairo_status_t status = cairo_surface_write_to_png_stream(surface, Append, &output);
    output.ThrowIfFailed();
    if (status != CAIRO_STATUS_SUCCESS)
        throw Failure(ExitCode::Internal, "The picture " + output.Text() + " could not be made: " +
                                              cairo_status_to_string(status) + ".");
}

}  // namespace Quorvan::Tools
