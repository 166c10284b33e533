#include "plugins/ui/widgets/Knob.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Quorvan::Ui {

namespace {

constexpr double kStart = -0.375, kSweep = 0.75;  ///< turns from the top
constexpr double kRadius = 19.0, kFirstRing = 24.0, kRingRoom = 8.0, kRingStep = 3.5;

/// Many rings stand closer.
double RingStep(uint32_t rings) {
    return rings < 3 ? kRingStep : std::min(kRingStep, kRingRoom / (rings - 1));
}

Point OnRing(Point centre, double radius, double turns) {
    const double angle = (turns - 0.25) * 2.0 * 3.14159265358979;
    return {centre.x + radius * std::cos(angle), centre.y + radius * std::sin(angle)};
}

}  // namespace

Knob::Knob(const Rect& place, Stage& face, std::unique_ptr<Control> moved, std::string itsLabel)
    : ControlWidget(place, face, std::move(moved), std::move(itsLabel)) {}

void Knob::ShowChance(const RandomDial& dial, double share) {
    chance = &dial;
    chanceShare = share;
}

double Knob::AngleOf(double position) const {
    const double share = std::clamp(position, 0.0, 1.0);
    return isChance ? 0.5 * kSweep * share : kStart + kSweep * share;
}

bool Knob::Tick(double seconds) {
    const bool moved = ControlWidget::Tick(seconds);
    Reach now;
    if (chance != nullptr && chance->IsShown())
        now = {chance->Amount(), chance->GoesUp(), chance->GoesDown()};
    return std::exchange(shownChance, now) != now || moved;
}

void Knob::Draw(Painter& painter) {
    DrawDial(painter);
    DrawChance(painter);
    DrawRoutes(painter, control->Influences());
    const Rect name{box.x + 2.0, box.y + 56.0, box.width - 4.0, 14.0};
    painter.Text(name, label, {Theme::kSmall, Theme::kDim}, Align::Centre);
    painter.Text(name.Shifted(0.0, 15.0), control->Text(), {Theme::kSmall, Theme::kText},
                 Align::Centre);
    DrawFocus(painter, box);
}

void Knob::DrawDial(Painter& painter) const {
    const Point centre = Middle();
    const double position = static_cast<double>(control->Position());
    const bool lit = hovered || dragging;
    painter.Arc(centre, kRadius, kStart, kStart + kSweep, Theme::kTrack, 4.0);
    const double angle = AngleOf(position);
    const double from = isChance ? -angle : AngleOf(bipolar ? 0.5 : 0.0);
    const Colour ink = isChance ? Theme::kOn : Theme::kAccent.Faded(0.9);
    if (std::abs(angle - from) > 0.001)
        painter.Arc(centre, kRadius, from, angle, lit ? Theme::kText : ink, 4.0);
    painter.Disc(centre, 14.0, lit ? Theme::kRaisedHover : Theme::kRaised);
    if (isChance) {
        const Colour arrows = position > 0.001 ? Theme::kText : Theme::kDim;
        painter.Arrow({centre.x, centre.y - 4.0}, 4.5, 0.0, arrows);
        painter.Arrow({centre.x, centre.y + 4.0}, 4.5, 0.5, arrows);
    } else
        painter.Line(OnRing(centre, 5.0, angle), OnRing(centre, 11.5, angle), Theme::kText, 2.0);
}

void Knob::DrawChance(Painter& painter) const {
    if (shownChance.amount <= 0.0)
        return;
    const double position = static_cast<double>(control->Position());
    const auto reach = [&](double room) {
        return chanceShare > 0.0 ? std::min(room, shownChance.amount * chanceShare)
                                 : shownChance.amount * room;
    };
    const double low = position - (shownChance.down ? reach(position) : 0.0);
    const double high = position + (shownChance.up ? reach(1.0 - position) : 0.0);
    painter.Arc(Middle(), 15.5, AngleOf(low), AngleOf(high), Theme::kOn, 2.0);
}

void Knob::DrawRoutes(Painter& painter, const Influence& influence) const {
    const Point centre = Middle();
    const double position = static_cast<double>(control->Position());
    const double step = RingStep(influence.count);
    for (uint32_t i = 0; i < influence.count; ++i) {
        const Influence::Route& route = influence.routes[i];
        painter.Arc(centre, kFirstRing + step * i, AngleOf(position),
                    AngleOf(position + static_cast<double>(route.amount)),
                    Theme::Source(route.source), std::min(2.0, 0.8 * step));
    }
    if (influence.count == 0)
        return;
    const Colour colour = Theme::Source(influence.routes[0].source);
    const Point dot = OnRing(centre, kRadius, AngleOf(static_cast<double>(influence.present)));
    painter.Disc(dot, 4.5, Theme::kPanel);
    painter.Disc(dot, 3.0, colour);
}

int Knob::RouteAt(const PointerEvent& event, const Influence& influence) const {
    const Point centre = Middle();
    const double distance = std::hypot(event.at.x - centre.x, event.at.y - centre.y);
    if (distance < kFirstRing - 1.5 || event.at.y >= box.y + 56.0)
        return ControlWidget::RouteAt(event, influence);
    const double ring = std::round((distance - kFirstRing) / RingStep(influence.count));
    return static_cast<int>(std::clamp(ring, 0.0, static_cast<double>(influence.count - 1)));
}

}  // namespace Quorvan::Ui
