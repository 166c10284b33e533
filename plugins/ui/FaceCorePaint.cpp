#include <algorithm>
#include <cstdio>
#include <ctime>

#include "host/parameters/ModulationNames.h"
#include "plugins/ui/FaceCore.h"
#include "plugins/ui/panels/Layout.h"

namespace Quorvan::Ui {

namespace {

constexpr double kTipDelay = 0.7;

/// Time of a core that this thread has had, whoever else keeps the machine busy.
double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

}  // namespace

void FaceCore::Draw(cairo_t* target, const Rect& clip) {
    const double began = ThreadSeconds();
    canvas.Show(target, clip, [this](cairo_t* context, const Rect& area) {
        Painter painter(context, canvas.Scale(), texts);
        Paint(painter, area);
    });
    drawSeconds = ThreadSeconds() - began;
    pictureSeconds += drawSeconds;
}

void FaceCore::Paint(Painter& painter, const Rect& area) {
    painter.Fill(area, Theme::kWindow);
    ForEachPanel([&](Panel& panel) {
        if (panel.Box().Inset(-8.0).Meets(area))
            panel.DrawGround(painter);
        for (auto& widget : panel.Widgets())
            if (widget->IsShown() && widget->box.Inset(-3.0).Meets(area))
                widget->Draw(painter);
    });
    PaintSaying(painter);
    if (carried)
        PaintCarried(painter);
    if (menu && menu->box.Inset(-4.0).Meets(area))
        menu->Draw(painter);
    if (entry)
        entry->Draw(painter);
    if (tipShown && tipBox.Meets(area))
        PaintTip(painter);
    if (showsCounter) {
        char line[64];
        std::snprintf(line, sizeof line, "%.2f ms a frame", 1000.0 * meanDrawSeconds);
        const Rect box{1112.0, 50.0, 152.0, 20.0};
        painter.Round(box, 4.0, Theme::kRaised);
        painter.Text(box.Inset(8.0, 0.0), line, {Theme::kSmall, Theme::kText}, Align::Right);
    }
}

/// Beside the names of the pages; over the browser, with a ground of its own.
void FaceCore::PaintSaying(Painter& painter) {
    constexpr double kTab = 136.0, kPad = 12.0;
    const Type type{Theme::kBody, Theme::kText};
    const std::string& sentence = saying.empty() && !browserIsOpen ? waiting : saying;
    if (sentence.empty())
        return;
    const double room = Layout::kTabs.width - kTab * static_cast<double>(pages.size());
    const double width = std::min(room, painter.TextWidth(sentence, type) + 2.0 * kPad + 1.0);
    const Rect box{Layout::kTabs.Right() - width, Layout::kTabs.y, width, Layout::kTabs.height};
    if (browserIsOpen) {
        painter.Round(box, 4.0, Theme::kRaised);
        painter.RoundLine(box, 4.0, Theme::kText);
    }
    painter.Text(browserIsOpen ? box.Inset(kPad, 0.0) : box, sentence, type, Align::Right);
}

/// Where a source can be dropped, and what it is.
void FaceCore::PaintCarried(Painter& painter) {
    const Colour colour = Theme::Source(*carried);
    for (Widget* const widget : Shown()) {
        const Control* const control = widget->ControlAt(widget->box.Centre());
        if (control == nullptr || !control->Row())
            continue;
        const bool isUnder = widget->box.Contains(pointer);
        painter.RoundLine(widget->box, 5.0, colour.Faded(isUnder ? 1.0 : 0.35),
                          isUnder ? 2.0 : 1.0);
    }
    const std::string& name = Host::SourceName(*carried);
    const double width = painter.TextWidth(name, {Theme::kBody, Theme::kWindow, true}) + 24.0;
    const Rect tag{pointer.x + 10.0, pointer.y + 8.0, width, 24.0};
    painter.Round(tag, 12.0, colour);
    painter.Text(tag, name, {Theme::kBody, Theme::kWindow, true}, Align::Centre);
}

/// A tip comes when the pointer rests on something, and goes when it moves on.
void FaceCore::UpdateTip() {
    const bool wanted = hovered != nullptr && held == nullptr && !menu && !entry && !carried &&
                        now - hoverSince > kTipDelay;
    std::string title, text;
    if (wanted) {
        if (const Control* const control = hovered->ControlAt(pointer)) {
            title = control->Name() + "   " + control->Text();
            text = control->Help();
        } else {
            title = hovered->TipTitle(pointer);
            text = hovered->TipText();
        }
    }
    const bool show = !title.empty();
    if (show == tipShown && title == tipTitle && text == tipText)
        return;
    Invalidate(tipBox);
    tipShown = show;
    tipTitle = std::move(title);
    tipText = std::move(text);
    if (!show)
        return;
    tipBox = Measured([this](Painter& painter) { return LayTip(painter, false); });
    Invalidate(tipBox);
}

void FaceCore::PaintTip(Painter& painter) { LayTip(painter, true); }

Rect FaceCore::LayTip(Painter& painter, bool draw) {
    constexpr double kWidth = 264.0, kPad = 10.0, kLine = 16.0;
    const Type body{Theme::kSmall, Theme::kText};
    const double lines = tipText.empty() ? 0.0
                                         : painter.Paragraph({0.0, 0.0, kWidth - 2.0 * kPad, 0.0},
                                                             tipText, body, kLine, true);
    const double height = 2.0 * kPad + 16.0 + (lines > 0.0 ? lines + 4.0 : 0.0);
    const Rect room = Layout::kWhole.Inset(8.0);
    const Rect owner = hovered != nullptr ? hovered->box : Rect{pointer.x, pointer.y, 1.0, 1.0};
    const bool isTall = owner.height > 120.0;
    const double below = isTall ? pointer.y + 20.0 : owner.Bottom() + 6.0;
    const double y =
        below + height <= room.Bottom() ? below : (isTall ? pointer.y : owner.y) - height - 6.0;
    const Rect tip{std::clamp(isTall ? pointer.x : owner.Centre().x - 0.5 * kWidth, room.x,
                              room.Right() - kWidth),
                   std::max(room.y, y), kWidth, height};
    if (draw) {
        painter.Round(tip, 6.0, Theme::kRaised);
        painter.RoundLine(tip, 6.0, Theme::kTrack);
        painter.Text({tip.x + kPad, tip.y + kPad, kWidth - 2.0 * kPad, 16.0}, tipTitle,
                     {Theme::kBody, Theme::kText, true});
        if (!tipText.empty())
            painter.Paragraph({tip.x + kPad, tip.y + kPad + 20.0, kWidth - 2.0 * kPad, lines},
                              tipText, body, kLine);
    }
    return tip;
}

}  // namespace Quorvan::Ui
