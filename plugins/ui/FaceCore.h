#pragma once

#include <cairo.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "plugins/ui/Canvas.h"
#include "plugins/ui/model/FaceModel.h"
#include "plugins/ui/panels/BrowserPanel.h"
#include "plugins/ui/panels/Pages.h"
#include "plugins/ui/widgets/EntryForm.h"
#include "plugins/ui/widgets/Menu.h"
#include "plugins/ui/widgets/Stage.h"

namespace Quorvan::Ui {

/// What a Face is inside: its panels, what lies over them, and who has the pointer and the keys.
class FaceCore final : public Stage {
public:
    FaceCore(Host::Instrument& instrument, Host::PresetLibrary& library);
    ~FaceCore() override;
    FaceCore(const FaceCore&) = delete;
    FaceCore& operator=(const FaceCore&) = delete;

    void Resize(int width, int height);
    double Scale() const { return canvas.Scale(); }
    std::vector<Rect> Idle(double seconds);
    void Draw(cairo_t* target, const Rect& clip);
    bool Press(const PointerEvent& event);
    bool Release(const PointerEvent& event);
    bool Move(const PointerEvent& event);
    bool Wheel(const WheelEvent& event);
    bool Key(const KeyEvent& event);
    bool Text(std::string_view signs);
    void Leave();
    bool IsTyping() const;

    // Stage
    void OpenMenu(const Rect& anchor, std::vector<MenuItem> items) override;
    void OpenEntry(const Rect& anchor, const std::string& text,
                   std::function<std::string(const std::string&)> accept) override;
    void OpenForm(const Rect& anchor, const std::vector<EntryLine>& lines,
                  AcceptLines accept) override;
    void CarrySource(uint32_t source, Point at) override;
    void DropSource(uint32_t source, Point at) override;
    void Say(const std::string& sentence) override;

    // For tests and the tools that draw.
    FaceModel& Model() { return model; }
    std::vector<Widget*> Shown();
    /// Texts of everything that is drawn from now on; null for none.
    void NoteTexts(std::vector<PlacedText>* log) { texts = log; }
    void OpenPage(size_t page);
    /// Seconds of a core that the last Draw took.
    double LastDrawSeconds() const { return drawSeconds; }

private:
    void MakePanels();
    void AddTabs();
    void OpenBrowser(bool open);
    void AddPage(const char* name, Panels panels);
    template <class Visit>
    void ForEachPanel(Visit&& visit) {
        for (auto& panel : panels)
            visit(*panel);
        for (auto& panel : pages[page].panels)
            if (panel->IsShown())
                visit(*panel);
        if (browserIsOpen)
            visit(*browser);
    }
    Widget* WidgetAt(Point at);
    Widget* FindControl(Point at);
    void HoverAt(Point at);
    void Focus(Widget* widget);
    void StepFocus(int way);
    bool CommandKey(const KeyEvent& event);
    bool OpenFocusMenu();
    bool TypeInFocus(const std::string& begun);
    void OpenControlMenu(Control& control, const Rect& anchor);
    void TidyOverlays();
    void LetGo();
    void RouteTo(Control& control, uint32_t source);
    void UpdateWaiting();
    void Invalidate(const Rect& area) { canvas.Invalidate(area); }

    void Paint(Painter& painter, const Rect& area);
    void PaintTip(Painter& painter);
    void PaintCarried(Painter& painter);
    void PaintSaying(Painter& painter);
    void UpdateTip();
    Rect LayTip(Painter& painter, bool draw);

    struct Page {
        std::string name;
        Panels panels;
    };

    FaceModel model;
    Canvas canvas;
    std::vector<std::unique_ptr<Panel>> panels;  ///< that are always there
    std::vector<Page> pages;
    size_t page = 0;
    std::unique_ptr<BrowserPanel> browser;
    bool browserIsOpen = false;
    ChosenSource edited = std::make_shared<uint32_t>(1);
    std::unique_ptr<Menu> menu, retired;  ///< retired: deleted once its action is over
    std::unique_ptr<EntryForm> entry;
    Widget* hovered = nullptr;
    Widget* held = nullptr;  ///< has the pointer
    Widget* focused = nullptr;

    Point pointer;
    double hoverSince = 0.0;
    bool tipShown = false;
    Rect tipBox;
    std::string tipTitle, tipText;
    std::optional<uint32_t> carried;
    Rect carriedBox;              ///< of what lies under it
    std::string saying, waiting;  ///< waiting: for MIDI that teaches; said while nothing else is
    double sayingUntil = 0.0;

    double lastPressTime = -1.0;
    Widget* lastPressed = nullptr;
    Point pressedAt;
    double now = 0.0;
    double drawSeconds = 0.0;
    double pictureSeconds = 0.0;  ///< of all draws since the last Idle
    double meanDrawSeconds = 0.0;
    bool showsCounter = false;
    std::vector<PlacedText>* texts = nullptr;
};

}  // namespace Quorvan::Ui
