#pragma once

#include "plugins/ui/widgets/ControlWidget.h"

namespace Quorvan::Ui {

/// How much chance a knob has: a small dial at its shoulder, dragged like a knob, with an arrow for
/// the direction, which a click changes where there is more than one.
class RandomDial final : public ControlWidget {
public:
    static constexpr double kSize = 24.0;

    /// itsDirection: null where chance goes both ways.
    RandomDial(const Rect& place, Stage& face, std::unique_ptr<Control> amount,
               std::unique_ptr<Control> itsDirection);

    double Amount() const { return static_cast<double>(control->Position()); }
    bool GoesUp() const;
    bool GoesDown() const;
    void Draw(Painter& painter) override;
    bool Tick(double seconds) override;
    void Press(const PointerEvent& event) override;
    void Release(const PointerEvent& event) override;
    void DoubleClick(const PointerEvent& event) override;

private:
    std::string_view Way() const;

    std::unique_ptr<Control> direction;
    float shownDirection = -1.0f;
    Point pressed;
    float pressedPosition = 0.0f, pressedDirection = 0.0f;  ///< as they stood then
};

}  // namespace Quorvan::Ui
