#include "plugins/ui/widgets/RoadView.h"

#include <cmath>

namespace Quorvan::Ui {

namespace {

// Two lanes: the road itself and, below it, the way back round the grains.
constexpr double kLane = 16.0, kLower = 20.0;
constexpr double kJoin = 25.0, kSplit = 268.0;
constexpr Rect kGrainBox{46.0, 0.0, 92.0, kLane}, kLimiterBox{150.0, 0.0, 92.0, kLane};
constexpr Rect kMixBox{504.0, 0.0, 30.0, kLane};
constexpr double kStationWidth = 222.0, kName = 48.0, kChip = 88.0;
constexpr std::array<Point, RoadView::kPlaces> kStations{
    {{34.0, kLower}, {278.0, 0.0}, {542.0, 0.0}}};
constexpr const char* kNames[]{"Loop", "Grains", "After"};
constexpr Type kSmallDim{Theme::kSmall, Theme::kDim};

}  // namespace

RoadView::RoadView(const Rect& place, Actions itsActions)
    : Widget(place), actions(std::move(itsActions)) {}

Rect RoadView::Station(uint32_t place) const {
    return {box.x + kStations[place].x, box.y + kStations[place].y, kStationWidth, kLane};
}

/// In the loop the sound runs from right to left.
Rect RoadView::Chip(uint32_t slot) const {
    const uint32_t place = shown[slot].place;
    const Rect station = Station(std::min(place, kPlaces - 1));
    const bool second = slot == 1 && shown[0].place == place;
    const double first = station.x + kName;
    const bool right = place == kLoop ? !second : second;
    return {first + (right ? kChip + 1.0 : 0.0), station.y + 1.0, kChip, kLane - 2.0};
}

int RoadView::SlotAt(Point at) const {
    for (uint32_t slot = 0; slot < kSlots; ++slot)
        if (Chip(slot).Contains(at))
            return static_cast<int>(slot);
    return -1;
}

bool RoadView::Tick(double) {
    std::array<Shown, kSlots> now;
    for (uint32_t slot = 0; slot < kSlots; ++slot)
        now[slot] = {actions.place(slot), actions.name(slot), actions.works(slot)};
    if (now == shown)
        return false;
    shown = std::move(now);
    return true;
}

void RoadView::DrawWays(Painter& painter) const {
    const double upper = box.y + 0.5 * kLane, lower = box.y + kLower + 0.5 * kLane;
    const Colour ink = Theme::kTrack;
    const auto across = [&](double from, double to, double y) {
        painter.Fill({box.x + from, y - 1.0, to - from, 2.0}, ink);
    };
    across(14.0, 774.0, upper);
    painter.Arrow({box.x + 779.0, upper}, 5.0, 0.25, Theme::kDim);
    across(kJoin, kSplit, lower);
    painter.Fill({box.x + kSplit - 1.0, upper, 2.0, lower - upper + 1.0}, ink);
    painter.Fill({box.x + kJoin - 1.0, upper + 5.0, 2.0, lower - upper - 4.0}, ink);
    painter.Arrow({box.x + kJoin, upper + 6.0}, 5.0, 0.0, Theme::kDim);
    painter.Disc({box.x + kSplit, upper}, 3.0, Theme::kDim);
    painter.Fill({box.x + kMixBox.Centre().x - 1.0, box.y + kLane, 2.0, 7.0}, ink);
    painter.Arrow({box.x + kMixBox.Centre().x, box.y + kLane + 5.0}, 4.0, 0.0, Theme::kDim);
    painter.Text({box.x + kMixBox.Centre().x - 40.0, box.y + kLane + 8.0, 80.0, 14.0}, "dry sound",
                 kSmallDim, Align::Centre);
    painter.Text({box.x, box.y, 16.0, kLane}, "In", kSmallDim);
    painter.Text({box.x + 788.0, box.y, 20.0, kLane}, "Out", kSmallDim);
    for (const auto& [place, name] :
         {std::pair(kGrainBox, "Grains"), std::pair(kLimiterBox, "Limiter"),
          std::pair(kMixBox, "Mix")}) {
        const Rect at = place.Shifted(box.x, box.y);
        painter.Round(at, 4.0, Theme::kRaised);
        painter.Text(at, name, {Theme::kSmall, Theme::kText}, Align::Centre);
    }
}

void RoadView::DrawChip(Painter& painter, uint32_t slot, const Rect& chip) const {
    const bool works = shown[slot].works;
    painter.Round(chip, 4.0, works ? Theme::kOn : Theme::kTrack);
    if (focused && slot == chosen)
        painter.RoundLine(chip.Inset(-1.0), 4.0, Theme::kFocus, 1.5);
    const Colour ink = works ? Theme::kWindow : Theme::kText;
    painter.Text({chip.x + 5.0, chip.y, 10.0, chip.height}, std::to_string(slot + 1),
                 {Theme::kSmall, ink, true});
    painter.Text({chip.x + 17.0, chip.y, chip.width - 20.0, chip.height}, shown[slot].name,
                 {Theme::kSmall, ink});
}

void RoadView::Draw(Painter& painter) {
    DrawWays(painter);
    for (uint32_t place = 0; place < kPlaces; ++place) {
        const Rect station = Station(place);
        const bool wanted = held >= 0 && moved && station.Inset(-2.0).Contains(pointer);
        painter.Round(station, 5.0, Theme::kPanel);
        painter.RoundLine(station, 5.0, wanted ? Theme::kText : Theme::kTrack);
        painter.Text({station.x + 7.0, station.y, kName - 8.0, station.height}, kNames[place],
                     kSmallDim);
    }
    for (uint32_t slot = 0; slot < kSlots; ++slot) {
        Rect chip = Chip(slot);
        if (held == static_cast<int>(slot) && moved)
            chip = chip.Shifted(pointer.x - grip.x, std::clamp(pointer.y - grip.y, -22.0, 22.0));
        DrawChip(painter, slot, chip);
    }
}

void RoadView::Press(const PointerEvent& event) {
    held = SlotAt(event.at);
    moved = false;
    grip = pointer = event.at;
    if (held >= 0)
        chosen = static_cast<uint32_t>(held);
}

void RoadView::Drag(const PointerEvent& event) {
    pointer = event.at;
    moved |= std::hypot(pointer.x - grip.x, pointer.y - grip.y) > 4.0;
}

/// What is let go between places goes to the nearest one.
void RoadView::Release(const PointerEvent&) {
    if (held >= 0 && moved) {
        uint32_t nearest = 0;
        double least = 1e9;
        for (uint32_t place = 0; place < kPlaces; ++place) {
            const Rect station = Station(place);
            const Point in{std::clamp(pointer.x, station.x, station.Right()),
                           std::clamp(pointer.y, station.y, station.Bottom())};
            const double distance = std::hypot(in.x - pointer.x, in.y - pointer.y);
            if (distance < least) {
                least = distance;
                nearest = place;
            }
        }
        if (nearest != shown[static_cast<size_t>(held)].place)
            actions.move(static_cast<uint32_t>(held), nearest);
    }
    held = -1;
    moved = false;
}

bool RoadView::Key(const KeyEvent& event) {
    const uint32_t place = shown[chosen].place;
    switch (event.key) {
        case Key::Up:
        case Key::Down:
            chosen = 1 - chosen;
            break;
        case Key::Left:
            if (place > 0)
                actions.move(chosen, place - 1);
            break;
        case Key::Right:
            if (place + 1 < kPlaces)
                actions.move(chosen, place + 1);
            break;
        default:
            return false;
    }
    Invalidate();
    return true;
}

Control* RoadView::ControlAt(Point at) {
    const int slot = SlotAt(at);
    return slot < 0 ? nullptr : actions.control(static_cast<uint32_t>(slot));
}

}  // namespace Quorvan::Ui
