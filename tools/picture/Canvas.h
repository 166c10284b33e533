#pragma once

#include <cairo.h>

#include <functional>
#include <string>

#include "tools/picture/Colour.h"
#include "tools/support/AtomicOutput.h"

namespace Quorvan::Tools {

/// A rectangle in pixels of the page.
struct Box {
    double x = 0.0, y = 0.0, width = 0.0, height = 0.0;

    double Right() const { return x + width; }
    double Bottom() const { return y + height; }
};

/// A page to draw on, with the few operations that the panels need. Pixels count from the upper
/// left.
class Canvas {
public:
    enum class Align { Left, Centre, Right };
    struct Type {
        double size = 14.0;  ///< pixels
        bool bold = false;
        Colour colour = Palette::kInk;
    };

    Canvas(int width, int height);
    ~Canvas();
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    void Fill(const Box& box, const Colour& colour);
    void Outline(const Box& box, const Colour& colour);
    /// An upright bar of the colours of 0, at its foot, to 1, with a border.
    void ColourBar(const Box& box, const std::function<Colour(double)>& colourOf);
    void Line(double x0, double y0, double x1, double y1, const Colour& colour, double width = 1.0);
    void DashedLine(double x0, double y0, double x1, double y1, const Colour& colour);
    /// Half of a disc: the side left or right of x.
    void HalfDisc(double x, double y, double radius, bool right, const Colour& colour);
    /// y is the base line. Text in any script that the machine has fonts for.
    void Text(double x, double y, const std::string& text, const Type& type,
              Align align = Align::Left);
    /// The same with dots in the middle where it would be wider than width. Answers the width that
    /// it takes.
    double FittedText(double x, double y, double width, const std::string& text, const Type& type,
                      Align align = Align::Left);
    /// Reading upward, centred at y.
    void UpwardText(double x, double y, const std::string& text, const Type& type);
    double TextWidth(const std::string& text, const Type& type);

    /// Nothing is drawn outside box until ClipNothing.
    void ClipTo(const Box& box);
    void ClipNothing();

    /// For drawing that the operations above don't cover.
    cairo_t* Context() { return context; }

    /// Writes the page as PNG; the output's Commit is still to come.
    void Save(AtomicOutput& output) const;

private:
    void Use(const Colour& colour);

    cairo_surface_t* surface;
    cairo_t* context;
};

}  // namespace Quorvan::Tools
