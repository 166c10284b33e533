#include "plugins/ui/widgets/Knob.h"

#include <algorithm>
#include <cmath>

namespace Quorvan::Ui {

namespace {

constexpr double kStart = -0.375, kSweep = 0.75;  ///< turns from the top
constexpr double kRadius = 19.0, kFirstRing = 24.0, kRingRoom = 8.0, kRingStep = 3.5;

/// Many rings stand closer.
double RingStep(uint32_t rings) {
    return rings < 3 ? kRingStep : std::min(kRingStep, kRingRoom / (rings - 1));
}

double AngleOf(double position) { return kStart + kSweep * std::clamp(position, 0.0, 1.0); }

Point OnRing(Point centre, double radius, double turns) {
    const double angle = (turns - 0.25) * 2.0 * 3.14159265358979;
    return {centre.x + radius * std::cos(angle), centre.y + radius * std::sin(angle)};
}

}  // namespace

Knob::Knob(const Rect& place, Stage& face, std::unique_ptr<Control> moved, std::string itsLabel)
    : ControlWidget(place, face, std::move(moved), std::move(itsLabel)) {}

void Knob::ShowChance(const Widget& dial, const Control& amount, const Control& direction,
                      double share) {
    chanceDial = &dial;
    chanceAmount = &amount;
    chanceDirection = &direction;
    chanceShare = share;
}

bool Knob::Tick(double seconds) {
    bool moved = ControlWidget::Tick(seconds);
    if (chanceAmount == nullptr)
        return moved;
    const float chance = chanceDial->IsShown() ? chanceAmount->Position() : 0.0f;
    moved |= chance != shownChance || chanceDirection->Position() != shownDirection;
    shownChance = chance;
    shownDirection = chanceDirection->Position();
    return moved;
}

void Knob::Draw(Painter& painter) {
    const Point centre = Middle();
    const double position = static_cast<double>(control->Position());
    const Influence influence = control->Influences();
    painter.Arc(centre, kRadius, AngleOf(0.0), AngleOf(1.0), Theme::kTrack, 4.0);
    const double from = bipolar ? 0.5 : 0.0;
    if (std::abs(position - from) > 0.001)
        painter.Arc(centre, kRadius, AngleOf(from), AngleOf(position),
                    hovered || dragging ? Theme::kText : Theme::kAccent.Faded(0.9), 4.0);
    painter.Disc(centre, 14.0, hovered || dragging ? Theme::kRaisedHover : Theme::kRaised);
    DrawChance(painter);
    const double angle = AngleOf(position);
    painter.Line(OnRing(centre, 5.0, angle), OnRing(centre, 11.5, angle), Theme::kText, 2.0);
    DrawRoutes(painter, influence);
    const Rect name{box.x + 2.0, box.y + 56.0, box.width - 4.0, 14.0};
    painter.Text(name, label, {Theme::kSmall, Theme::kDim}, Align::Centre);
    painter.Text(name.Shifted(0.0, 15.0), control->Text(), {Theme::kSmall, Theme::kText},
                 Align::Centre);
    DrawFocus(painter, box);
}

/// The directions of all random depths begin with "up" and "down"; a third is both.
void Knob::DrawChance(Painter& painter) const {
    if (chanceAmount == nullptr || !chanceDial->IsShown() || chanceAmount->Position() <= 0.0f)
        return;
    const double position = static_cast<double>(control->Position());
    const double amount = static_cast<double>(chanceAmount->Position());
    const uint32_t way = chanceDirection->Choice();
    const std::string first = std::string(chanceDirection->Choices().front());
    const bool firstIsDown = first == "Shorter";
    const bool up = way == 2 || (way == 0) != firstIsDown, down = way == 2 || !up;
    const auto reach = [&](double room) {
        return chanceShare > 0.0 ? std::min(room, amount * chanceShare) : amount * room;
    };
    const double low = position - (down ? reach(position) : 0.0);
    const double high = position + (up ? reach(1.0 - position) : 0.0);
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
