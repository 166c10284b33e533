#pragma once

#include <memory>
#include <string>

#include "plugins/ui/widgets/Stage.h"
#include "plugins/ui/widgets/Widget.h"

namespace Quorvan::Ui {

/// What all widgets of one control have in common: dragging, fine with shift, wheel, arrow keys,
/// double click to the default; with Alt, the amount of the first source that moves it.
class ControlWidget : public Widget {
public:
    ControlWidget(const Rect& place, Stage& face, std::unique_ptr<Control> moved,
                  std::string itsLabel);

    bool Tick(double seconds) override;
    void Press(const PointerEvent& event) override;
    void Drag(const PointerEvent& event) override;
    void Release(const PointerEvent& event) override;
    void DoubleClick(const PointerEvent& event) override;
    bool Wheel(const WheelEvent& event) override;
    bool Key(const KeyEvent& event) override;
    bool CanFocus() const override { return true; }
    Control* ControlAt(Point) override { return control.get(); }
    Control& Moved() { return *control; }

protected:
    /// Pixels of a drag for the whole travel; 0: it can't be dragged.
    virtual double DragTravel() const { return 200.0; }
    virtual bool DragsAcross() const { return false; }
    void Nudge(double share, bool fine);
    /// Number of the route that is taken hold of there; -1: none.
    virtual int RouteAt(const PointerEvent& event, const Influence&) const {
        return event.modifiers.alt ? 0 : -1;
    }
    /// Answers whether a press takes hold of a route's amount.
    bool TakeRoute(const PointerEvent& event);
    /// A bar for each route along the lower edge, as far as it reaches, and a dot where the control
    /// stands now.
    void DrawRouteBars(Painter& painter, const Rect& along) const;
    void DrawFocus(Painter& painter, const Rect& around, double radius = 4.0) const;

    Stage& stage;
    std::unique_ptr<Control> control;
    std::string label;
    bool dragging = false;

private:
    void DragRoute(const PointerEvent& event);

    // The route whose amount is being dragged.
    bool draggingRoute = false;
    uint32_t draggedSource = 0;
    double draggedAmount = 0.0;

    Point last;
    double dragged = 0.0;  ///< position without steps
    // What was drawn.
    Influence shownInfluence;
    float shownPosition = -1.0f;
    std::string shownText;
};

}  // namespace Quorvan::Ui
