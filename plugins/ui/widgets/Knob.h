#pragma once

#include "plugins/ui/widgets/RandomDial.h"

namespace Quorvan::Ui {

/// A dial with its name and value below. Around it: a ring for each source of modulation that moves
/// it, with a dot where it stands now; inside, the reach of chance where it has some. A source's
/// amount is dragged on its ring, that of the first one with Alt on the dial too.
class Knob final : public ControlWidget {
public:
    static constexpr double kWidth = 80.0, kHeight = 88.0;

    Knob(const Rect& place, Stage& face, std::unique_ptr<Control> moved, std::string itsLabel);

    /// Shows how far the chance of a dial reaches, while that is shown. share: of the knob's travel
    /// at 100 %; 0: up to its end.
    void ShowChance(const RandomDial& dial, double share);
    /// It is a reach of chance itself, to both sides of the top.
    void MakeChance() { isChance = true; }
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

    double AngleOf(double position) const;
    void DrawDial(Painter& painter) const;

    const RandomDial* chance = nullptr;
    double chanceShare = 0.0;
    struct Reach {
        double amount = 0.0;
        bool up = false, down = false;
        bool operator==(const Reach&) const = default;
    } shownChance;
    bool bipolar = false, isChance = false;
};

}  // namespace Quorvan::Ui
