#include "plugins/ui/FaceCore.h"

#include "plugins/ui/panels/HeaderPanel.h"
#include "plugins/ui/panels/Layout.h"
#include "plugins/ui/panels/SourcesPanel.h"
#include "plugins/ui/panels/TapePanel.h"
#include "plugins/ui/widgets/ActionButton.h"
#include "plugins/ui/widgets/Knob.h"

namespace Quorvan::Ui {

FaceCore::FaceCore(Host::Instrument& instrument, Host::PresetLibrary& library)
    : model(instrument, library), canvas(Layout::kWhole.width, Layout::kWhole.height) {
    instrument.Display().Watch(true);
    MakePanels();
}

FaceCore::~FaceCore() {
    LetGo();
    model.TheInstrument().Display().Watch(false);
}

void FaceCore::MakePanels() {
    panels.push_back(
        std::make_unique<HeaderPanel>(model, *this, [this] { OpenBrowser(!browserIsOpen); }));
    panels.push_back(std::make_unique<TapePanel>(model));
    for (auto& panel : MakeTapeControls(model, *this))
        panels.push_back(std::move(panel));
    panels.push_back(MakeLevels(model, *this));
    AddPage("Grains", MakeGrainPage(model, *this));
    AddPage("Effects and space", MakeEffectPage(model, *this));
    const size_t modulation = pages.size();
    AddPage("Modulation", MakeModulationPage(model, *this, edited));
    AddPage("Matrix", MakeMatrixPage(model));
    panels.push_back(std::make_unique<SourcesPanel>(
        model, *this, [this, modulation] { return page == modulation ? *edited : ~0u; },
        [this, modulation](uint32_t chosen) {
            *edited = chosen;
            OpenPage(modulation);
            Invalidate(Layout::kPage);
        }));
    AddTabs();
    browser = std::make_unique<BrowserPanel>(model, *this, [this] { OpenBrowser(false); });
}

void FaceCore::OpenBrowser(bool open) {
    LetGo();
    browserIsOpen = open;
    hovered = nullptr;
    Focus(nullptr);
    if (open)
        Focus(browser->Opened());
    Invalidate(Layout::kWhole);
}

bool FaceCore::IsTyping() const {
    return entry || dynamic_cast<const TextField*>(focused) != nullptr;
}

void FaceCore::AddPage(const char* name, Panels members) {
    pages.push_back({name, std::move(members)});
}

namespace {

/// Names of the pages, of which one is open.
class TabsPanel final : public Panel {
public:
    TabsPanel(std::vector<std::string> names, const std::function<size_t()>& open,
              const std::function<void(size_t)>& choose)
        : Panel(Layout::kTabs) {
        for (size_t i = 0; i < names.size(); ++i)
            Add<ActionButton>(
                At(128.0 * static_cast<double>(i), 0.0, 120.0, box.height),
                [name = names[i], open, i] {
                    return ActionButton::Look{name, true, open() == i};
                },
                [choose, i](const Rect&) { choose(i); })
                .Explain(names[i], HelpOnView("Page").sentence);
    }
};

}  // namespace

void FaceCore::AddTabs() {
    std::vector<std::string> names;
    for (const Page& each : pages)
        names.push_back(each.name);
    panels.push_back(std::make_unique<TabsPanel>(
        names, [this] { return page; }, [this](size_t chosen) { OpenPage(chosen); }));
}

void FaceCore::OpenPage(size_t chosen) {
    if (chosen >= pages.size() || chosen == page)
        return;
    LetGo();
    page = chosen;
    hovered = nullptr;
    Focus(nullptr);
    Invalidate(Layout::kPage);
    Invalidate(Layout::kTabs);
}

std::vector<Widget*> FaceCore::Shown() {
    std::vector<Widget*> shown;
    ForEachPanel([&](Panel& panel) {
        for (auto& widget : panel.Widgets())
            if (widget->IsShown())
                shown.push_back(widget.get());
    });
    return shown;
}

void FaceCore::Resize(int width, int height) { canvas.Resize(width, height); }

std::vector<Rect> FaceCore::Idle(double seconds) {
    now = seconds;
    meanDrawSeconds += 0.05 * (std::exchange(pictureSeconds, 0.0) - meanDrawSeconds);
    model.Refresh(seconds);
    ForEachPanel([&](Panel& panel) {
        panel.Update();
        for (auto& widget : panel.Widgets()) {
            const bool moved = widget->IsShown() && widget->Tick(seconds);
            if (widget->TakeStale() || moved)
                Invalidate(widget->box.Inset(-3.0));
        }
    });
    if (menu && menu->TakeStale())
        Invalidate(menu->box.Inset(-4.0));
    if (entry && entry->TakeStale())
        Invalidate(entry->Reach());
    UpdateTip();
    if (!saying.empty() && now > sayingUntil) {
        saying.clear();
        Invalidate(Layout::kTabs);
    }
    UpdateWaiting();
    if (showsCounter)
        Invalidate({1100.0, 48.0, 164.0, 24.0});
    return canvas.TakeNews();
}

void FaceCore::UpdateWaiting() {
    const uint32_t index = model.TheInstrument().LearningMidi();
    const std::string sentence =
        index == Host::kUnassigned
            ? std::string()
            : model.Catalog()[index].title + " waits for MIDI: move a control.";
    if (std::exchange(waiting, sentence) != sentence)
        Invalidate(Layout::kTabs);
}

bool FaceCore::Key(const KeyEvent& event) {
    tipShown = false;
    if (entry || menu) {
        entry ? entry->Key(event) : menu->Key(event);
        TidyOverlays();
        return true;
    }
    const bool isOwn = event.key == Key::Letter && IsTyping();
    if (!isOwn && CommandKey(event))
        return true;
    if (browserIsOpen && event.key == Key::Escape) {
        OpenBrowser(false);
        return true;
    }
    return focused != nullptr && focused->IsShown() &&
           (focused->Key(event) || (event.key == Key::Enter && TypeInFocus({})));
}

/// Opens a line for the value of what keys work on; begun: its first sign.
bool FaceCore::TypeInFocus(const std::string& begun) {
    const Point at = focused->FocusPoint();
    Control* const control = focused->ControlAt(at);
    if (control == nullptr)
        return false;
    // Over the widget, or beside the place on it where that is large.
    const Rect& box = focused->box;
    const bool isLarge = box.height > 2.0 * Knob::kHeight || box.width > 3.0 * Knob::kWidth;
    TypeValue(*this, *control, isLarge ? Rect{at.x, at.y, 1.0, 1.0} : box, begun);
    return true;
}

bool FaceCore::CommandKey(const KeyEvent& event) {
    Host::Instrument& instrument = model.TheInstrument();
    if (event.key == Key::Tab) {
        StepFocus(event.modifiers.shift ? -1 : 1);
        return true;
    }
    if (event.key == Key::Menu)
        return OpenFocusMenu();
    if (event.key == Key::F12) {
        showsCounter = !showsCounter;
        Invalidate(Layout::kWhole);
        return true;
    }
    if (event.key != Key::Letter || !event.modifiers.control)
        return false;
    const bool redo = event.letter == 'y' || (event.letter == 'z' && event.modifiers.shift);
    if (redo)
        instrument.Redo();
    else if (event.letter == 'z')
        instrument.Undo();
    return redo || event.letter == 'z';
}

/// What the right button does where keys work.
bool FaceCore::OpenFocusMenu() {
    if (focused == nullptr || !focused->IsShown())
        return false;
    const Point at = focused->FocusPoint();
    if (focused->RightPress({at, Button::Right, {}, 0.0}))
        return true;
    Control* const control = focused->ControlAt(at);
    if (control != nullptr)
        OpenControlMenu(*control, {at.x, at.y, 1.0, 1.0});
    return control != nullptr;
}

bool FaceCore::Text(std::string_view signs) {
    if (entry)
        return entry->Text(signs);
    if (menu)
        return menu->Text(signs);
    if (focused == nullptr || !focused->IsShown() || signs.empty())
        return false;
    const bool beginsNumber =
        std::string_view("0123456789.-+@").find(signs.front()) != std::string_view::npos;
    return focused->Text(signs) || (beginsNumber && TypeInFocus(std::string(signs)));
}

void FaceCore::Focus(Widget* widget) {
    if (focused == widget)
        return;
    if (focused != nullptr)
        focused->SetFocus(false);
    focused = widget;
    if (focused != nullptr)
        focused->SetFocus(true);
}

void FaceCore::StepFocus(int way) {
    std::vector<Widget*> all = Shown();
    // The browser hides what lies under it.
    std::erase_if(all, [this](Widget* widget) {
        return !widget->CanFocus() || (browserIsOpen && !browser->Has(*widget));
    });
    if (all.empty())
        return;
    const auto count = static_cast<int>(all.size());
    const auto at = std::find(all.begin(), all.end(), focused);
    const int from = at == all.end() ? (way > 0 ? -1 : 0) : static_cast<int>(at - all.begin());
    Focus(all[static_cast<size_t>((from + way + count) % count)]);
}

}  // namespace Quorvan::Ui
