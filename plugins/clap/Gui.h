#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "clap/ext/gui.h"
#include "clap/plugin.h"
#include "plugins/ui/window/FaceWindow.h"

namespace Quorvan::Clap {

class ClapPlugin;

/// The window of a plug-in as its host opens it, in a window of the host's or one of its own. All
/// on the main thread. A timer of the host's has it drawn, so that a host without timers has no
/// window.
class Gui {
public:
    explicit Gui(ClapPlugin& clapPlugin, const clap_host_t& clapHost)
        : plugin(clapPlugin), host(clapHost) {}
    ~Gui() { Destroy(); }
    Gui(const Gui&) = delete;
    Gui& operator=(const Gui&) = delete;

    bool IsSupported(const char* api, bool isFloating) const;
    bool Create(const char* api, bool isFloating);
    void Destroy();
    bool SetScale(double newScale);
    Ui::FaceWindow::Size GetSize() const;
    bool SetSize(Ui::FaceWindow::Size wanted);
    bool SetParent(const clap_window_t& parent);
    bool SetTransient(const clap_window_t& parent);
    void SuggestTitle(const char* newTitle);
    bool Show();
    bool Hide();

    /// Whether the timer is the window's, which has then been looked after.
    bool TakeTimer(clap_id id);
    /// The window has events.
    void TakeEvents();

private:
    bool Open(uintptr_t parent);
    void Look();
    void WatchConnection();
    void StopTimer();
    void TellHost();
    std::vector<float> Controls() const;

    ClapPlugin& plugin;
    const clap_host_t& host;
    std::unique_ptr<Ui::FaceWindow> window;
    bool isCreated = false, floats = false, wasHeld = false;
    double scale = 1.0;
    uintptr_t transientFor = 0;
    std::string title = "Tesserae";
    Ui::FaceWindow::Size size;
    clap_id timer = CLAP_INVALID_ID;
    int connection = -1;      ///< file descriptor that the host watches
    std::vector<float> told;  ///< where the controls stood when the host last heard of all of them
};

}  // namespace Quorvan::Clap
