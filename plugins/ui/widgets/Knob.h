#pragma once

#include "plugins/ui/widgets/ControlWidget.h"

namespace Quorvan::Ui {

/// A dial with its name and value below. Around it: a ring for each source of modulation that moves
/// it, with a dot where it stands now; inside, the reach of chance where it has some. A source's
/// amount is dragged on its ring, that of the first one with Alt on the dial too.
class Knob final : public ControlWidget {
public:
    static constexpr double kWidth = 72.0, kHeight = 88.0;

    Knob(const Rect& place, Stage& face, std::unique_ptr<Control> moved, std::string itsLabel);

    /// Shows how far chance reaches; both outlive the knob. share: of the knob's travel at 100 %;
    /// 0: up to its end.
    /// nothing is shown where dial is not.
    void ShowChance(const Widget& dial, const Control& amount, const Control& direction,
                    double share);
    /// The travel has its middle at rest: pitch, pan.
    void MakeBipolar() { bipolar = true; }

    void Draw(Painter& painter) override;
    bool Tick(double seconds) override;

protected:
    int RouteAt(const PointerEvent& event, const Influence& influence) const override;

private:
    Point Middle() const { return {box.x + 0.5 * box.width, box.y + 32.0}; }
    void DrawChance(Painter& painter) const;
    void DrawRoutes(Painter& painter, const Influence& influence) const;

    const Widget* chanceDial = nullptr;
    const Control* chanceAmount = nullptr;
    const Control* chanceDirection = nullptr;
    double chanceShare = 0.0;
    float shownChance = -1.0f, shownDirection = -1.0f;
    bool bipolar = false;
};

}  // namespace Quorvan::Ui
