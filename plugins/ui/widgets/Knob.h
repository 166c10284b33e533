#pragma once

#include "plugins/ui/widgets/ControlWidget.h"

namespace Quorvan::Ui {

/// A dial with its name and value below. Around it: a ring for each source of modulation that moves
/// it, with a dot where it stands now; inside, the reach of chance where it has some. Another
/// source's amount is dragged with Alt on the dial, or on the source's own ring.
class Knob final : public ControlWidget {
public:
    static constexpr double kWidth = 72.0, kHeight = 88.0;

    Knob(const Rect& place, Stage& face, std::unique_ptr<Control> moved, std::string itsLabel);

    /// Shows how far chance reaches; both outlive the knob. share: of the knob's travel at 100 %;
    /// 0: up to its end.
    void ShowChance(const Control& amount, const Control& direction, double share);
    /// The travel has its middle at rest: pitch, pan.
    void MakeBipolar() { bipolar = true; }

    void Draw(Painter& painter) override;
    bool Tick(double seconds) override;
    void Press(const PointerEvent& event) override;
    void Drag(const PointerEvent& event) override;
    void Release(const PointerEvent& event) override;

private:
    Point Middle() const { return {box.x + 0.5 * box.width, box.y + 32.0}; }
    void DrawChance(Painter& painter) const;
    void DrawRoutes(Painter& painter, const Influence& influence) const;

    const Control* chanceAmount = nullptr;
    const Control* chanceDirection = nullptr;
    double chanceShare = 0.0;
    float shownChance = -1.0f, shownDirection = -1.0f;
    bool bipolar = false;
    // The route whose amount is being dragged.
    bool draggingRoute = false;
    uint32_t draggedSource = 0;
    double draggedAmount = 0.0;
    Point lastPoint;
};

}  // namespace Quorvan::Ui
