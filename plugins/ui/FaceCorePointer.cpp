#include <algorithm>
#include <cmath>
#include <utility>

#include "host/parameters/ModulationNames.h"
#include "plugins/ui/FaceCore.h"
#include "plugins/ui/model/FunctionCurve.h"
#include "plugins/ui/panels/Layout.h"

namespace Quorvan::Ui {

namespace {

constexpr double kDoubleClickSeconds = 0.35;
constexpr double kStill = 4.0;  ///< pixels that a click may move
constexpr float kDropAmount = 0.25f;

/// Whether a source is a function that nobody has drawn yet.
bool IsFlat(FaceModel& model, uint32_t source) {
    constexpr uint32_t kFirst = 1, kFunctions = 3;
    if (source < kFirst || source >= kFirst + kFunctions)
        return false;
    return FunctionCurve(model, source).IsFlat();
}

PointerEvent Moved(const PointerEvent& event, Point at) {
    PointerEvent moved = event;
    moved.at = at;
    return moved;
}

}  // namespace

Widget* FaceCore::WidgetAt(Point at) {
    Widget* found = nullptr;
    // The browser hides what lies under it.
    const bool overBrowser = browserIsOpen && browser->Box().Contains(at);
    ForEachPanel([&](Panel& panel) {
        if (overBrowser && &panel != browser.get())
            return;
        for (auto& widget : panel.Widgets())
            if (widget->IsShown() && widget->box.Contains(at))
                found = widget.get();
    });
    return found;
}

bool FaceCore::Press(const PointerEvent& event) {
    const PointerEvent moved = Moved(event, canvas.ToLogical(event.at));
    pointer = moved.at;
    UpdateTip();
    tipShown = false;
    if (menu || entry) {
        menu ? menu->Press(moved) : entry->Press(moved);
        TidyOverlays();
        return true;
    }
    if (browserIsOpen && !browser->Box().Contains(moved.at) &&
        !Layout::kHeader.Contains(moved.at)) {
        OpenBrowser(false);
        return true;
    }
    Widget* const widget = WidgetAt(moved.at);
    if (event.button == Button::Right) {
        if (widget == nullptr || widget->RightPress(moved))
            return widget != nullptr;
        if (Control* const control = widget->ControlAt(moved.at))
            OpenControlMenu(*control, {moved.at.x, moved.at.y, 1.0, 1.0});
        return true;
    }
    Focus(widget != nullptr && widget->CanFocus() ? widget : nullptr);
    if (widget == nullptr || event.button != Button::Left)
        return false;
    const bool isNear = std::hypot(moved.at.x - pressedAt.x, moved.at.y - pressedAt.y) <= kStill;
    const bool isDouble = widget == lastPressed && isNear && event.time >= lastPressTime &&
                          event.time - lastPressTime < kDoubleClickSeconds;
    lastPressed = isDouble ? nullptr : widget;
    lastPressTime = event.time;
    pressedAt = moved.at;
    held = widget;
    isDouble ? widget->DoubleClick(moved) : widget->Press(moved);
    widget->Invalidate();
    return true;
}

bool FaceCore::Move(const PointerEvent& event) {
    const PointerEvent moved = Moved(event, canvas.ToLogical(event.at));
    pointer = moved.at;
    if (menu) {
        menu->Hover(moved.at);
        return true;
    }
    if (held != nullptr) {
        // What was dragged is not the first half of a double click.
        if (std::hypot(moved.at.x - pressedAt.x, moved.at.y - pressedAt.y) > kStill)
            lastPressed = nullptr;
        held->Drag(moved);
        held->Invalidate();
        return true;
    }
    HoverAt(moved.at);
    return hovered != nullptr;
}

void FaceCore::HoverAt(Point at) {
    Widget* const widget = entry ? nullptr : WidgetAt(at);
    hoverSince = now;
    if (tipShown) {
        tipShown = false;
        Invalidate(tipBox);
    }
    if (widget != hovered) {
        if (hovered != nullptr)
            hovered->SetHover(false);
        hovered = widget;
        if (hovered != nullptr)
            hovered->SetHover(true);
    }
    if (hovered != nullptr)
        hovered->Hover(at);
}

bool FaceCore::Release(const PointerEvent& event) {
    const PointerEvent moved = Moved(event, canvas.ToLogical(event.at));
    pointer = moved.at;
    if (held == nullptr || event.button != Button::Left)
        return false;
    Widget* const widget = std::exchange(held, nullptr);
    widget->Release(moved);
    widget->Invalidate();
    HoverAt(moved.at);
    return true;
}

bool FaceCore::Wheel(const WheelEvent& event) {
    WheelEvent moved = event;
    moved.at = canvas.ToLogical(event.at);
    if (menu)
        return menu->Wheel(moved);
    Widget* const widget = entry ? nullptr : WidgetAt(moved.at);
    return widget != nullptr && widget->Wheel(moved);
}

void FaceCore::Leave() {
    if (held == nullptr)
        HoverAt({-1.0, -1.0});
}

void FaceCore::OpenMenu(const Rect& anchor, std::vector<MenuItem> items) {
    if (menu)
        Invalidate(menu->box.Inset(-4.0));
    // The one before may be in the middle of its own action.
    auto next = std::make_unique<Menu>(anchor, Layout::kWhole.Inset(8.0), std::move(items));
    std::swap(menu, next);
    retired = std::move(next);
    LetGo();
    Invalidate(menu->box.Inset(-4.0));
}

void FaceCore::OpenEntry(const Rect& anchor, const std::string& text,
                         std::function<std::string(const std::string&)> accept) {
    OpenForm(anchor, {{"", text}},
             [take = std::move(accept)](const std::vector<std::string>& lines) {
                 return take(lines[0]);
             });
}

void FaceCore::OpenForm(const Rect& anchor, const std::vector<EntryLine>& lines,
                        AcceptLines accept) {
    if (entry)
        Invalidate(entry->Reach());
    entry =
        std::make_unique<EntryForm>(anchor, Layout::kWhole.Inset(8.0), lines, std::move(accept));
    LetGo();
}

/// A gesture ends where something else takes the pointer.
void FaceCore::LetGo() {
    if (Widget* const widget = std::exchange(held, nullptr))
        widget->Release({pointer, Button::Absent, {}, now});
}

/// Closes what is done with, whatever that is.
void FaceCore::TidyOverlays() {
    if (menu && menu->IsDone()) {
        Invalidate(menu->box.Inset(-4.0));
        menu.reset();
    }
    retired.reset();
    if (entry && entry->IsDone()) {
        Invalidate(entry->Reach());
        entry.reset();
    }
}

void FaceCore::CarrySource(uint32_t source, Point at) {
    if (!carried)
        Invalidate(Layout::kWhole);
    carried = source;
    Invalidate(carriedBox.Inset(-24.0));
    Widget* const under = WidgetAt(at);
    carriedBox = under != nullptr ? under->box : Rect{at.x, at.y, 1.0, 1.0};
    Invalidate(carriedBox.Inset(-24.0));
    Invalidate({at.x - 160.0, at.y - 60.0, 320.0, 120.0});
    // A page opens under what is carried over its name.
    if (Layout::kTabs.Contains(at)) {
        const auto tab = static_cast<size_t>((at.x - Layout::kTabs.x) / 128.0);
        if (tab < pages.size() && tab != page) {
            Widget* const carrier = std::exchange(held, nullptr);
            OpenPage(tab);
            held = carrier;
            Invalidate(Layout::kWhole);
        }
    }
}

void FaceCore::DropSource(uint32_t source, Point at) {
    carried.reset();
    Invalidate(Layout::kWhole);
    Widget* const widget = WidgetAt(at);
    Control* const control = widget != nullptr ? widget->ControlAt(at) : nullptr;
    if (control == nullptr)
        return;
    RouteTo(*control, source);
}

/// Lets a source move a control, and says so. A route that is there already stays as it is.
void FaceCore::RouteTo(Control& control, uint32_t source) {
    const std::string& name = Host::SourceName(source);
    if (!control.Row())
        return Say(control.Name() + " can't be modulated.");
    const Influence before = control.Influences();
    if (std::any_of(before.routes.begin(), before.routes.begin() + before.count,
                    [source](const Influence::Route& route) { return route.source == source; }))
        return Say(name + " moves " + control.Name() + " already. Drag its ring to say how far.");
    control.Route(source, kDropAmount);
    Say(name + " moves " + control.Name() + " now. " +
        (IsFlat(model, source) ? "Its curve is flat: click the tile to draw one."
                               : "Drag its ring to say how far."));
}

void FaceCore::Say(const std::string& sentence) {
    saying = sentence;
    sayingUntil = now + 5.0;
    Invalidate(Layout::kTabs);
}

}  // namespace Quorvan::Ui
