#pragma once

#include <pango/pangocairo.h>

#include <memory>
#include <string>

#include "tools/picture/Canvas.h"

namespace Quorvan::Tools {

/// One line of text, set as its script asks for. What is no valid text shows replacement signs, and
/// line ends show as signs too.
class TextLayout {
public:
    TextLayout(cairo_t* page, const std::string& text, const Canvas::Type& type);

    double Width() const;  ///< pixels
    /// Puts dots into the middle where it is wider.
    void Fit(double width);
    /// Draws it in the page's present colour, from x on; y is the base line.
    void Show(double x, double y);

private:
    struct Release {
        void operator()(PangoLayout* held) const { g_object_unref(held); }
    };
    cairo_t* context;
    std::unique_ptr<PangoLayout, Release> layout;
};

}  // namespace Quorvan::Tools
