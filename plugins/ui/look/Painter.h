#pragma once

#include <cairo.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "plugins/ui/look/Colour.h"
#include "plugins/ui/look/Geometry.h"
#include "plugins/ui/look/Theme.h"

namespace Quorvan::Ui {

enum class Align : uint8_t { Left, Centre, Right };

struct Type {
    double size = Theme::kBody;
    Colour colour = Theme::kText;
    bool bold = false;
};

/// A text that was drawn, for those who look after the layout.
struct PlacedText {
    Rect box;             ///< that it was meant for
    double width = 0.0;   ///< that it takes
    double wanted = 0.0;  ///< that all of it would have taken
    std::string text;
};

/// Draws on a Cairo context, in logical pixels. Paths run clockwise from their first point.
class Painter {
public:
    /// scale: pixels of the context for a logical one; log: null, or where texts are noted.
    Painter(cairo_t* target, double pixelScale, std::vector<PlacedText>* log = nullptr);

    void Fill(const Rect& box, const Colour& colour);
    void Round(const Rect& box, double radius, const Colour& colour);
    void RoundLine(const Rect& box, double radius, const Colour& colour, double width = 1.0);
    void Line(Point from, Point to, const Colour& colour, double width = 1.0);
    void Path(std::span<const Point> points, const Colour& colour, double width = 1.5);
    /// Between the points and the line y = base.
    void Area(std::span<const Point> points, double base, const Colour& colour);
    /// Part of a ring, angles in turns from the top, clockwise.
    void Arc(Point centre, double radius, double from, double to, const Colour& colour,
             double width);
    void Disc(Point centre, double radius, const Colour& colour);
    void Ring(Point centre, double radius, const Colour& colour, double width = 1.0);
    /// A triangle that points along turns from the top.
    void Arrow(Point centre, double size, double turns, const Colour& colour);

    /// One line, in the middle of the box's height; ends with dots where it would be wider.
    void Text(const Rect& box, std::string_view text, const Type& type, Align align = Align::Left);
    double TextWidth(std::string_view text, const Type& type);
    /// Words in lines of up to box.width, from its top on. Answers the height that they take.
    double Paragraph(const Rect& box, std::string_view text, const Type& type, double lineHeight,
                     bool measureOnly = false);

    void Clip(const Rect& box);
    void Unclip();
    /// The nearest edge between pixels, for lines that shall be sharp.
    double Snap(double logical) const;
    cairo_t* Context() { return context; }
    double Scale() const { return scale; }

private:
    void Use(const Colour& colour);
    void RoundPath(const Rect& box, double radius);
    void Choose(const Type& type);

    cairo_t* context;
    double scale;
    std::vector<PlacedText>* texts;
};

/// What measure(painter) answers of a painter on nothing, for what has to know its size before it
/// is drawn.
template <class Measure>
auto Measured(Measure&& measure) {
    cairo_surface_t* const surface = cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1);
    cairo_t* const context = cairo_create(surface);
    Painter painter(context, 1.0);
    const auto size = measure(painter);
    cairo_destroy(context);
    cairo_surface_destroy(surface);
    return size;
}

}  // namespace Quorvan::Ui
