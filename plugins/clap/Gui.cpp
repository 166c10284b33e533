#include "plugins/clap/Gui.h"

#include <cstring>
#include <exception>

#include "clap/ext/params.h"
#include "clap/ext/timer-support.h"
#include "plugins/clap/ClapExtras.h"
#include "plugins/clap/ClapPlugin.h"

namespace Quorvan::Clap {

namespace {

constexpr uint32_t kFrameMilliseconds = 16;

template <class Extension>
const Extension* Of(const clap_host_t& host, const char* id) {
    return static_cast<const Extension*>(host.get_extension(&host, id));
}

}  // namespace

bool Gui::IsSupported(const char* api, bool isFloating) const {
    const bool isOurs = (isFloating && (api == nullptr || *api == '\0')) ||
                        (api != nullptr && std::strcmp(api, CLAP_WINDOW_API_X11) == 0);
    return isOurs && Of<clap_host_timer_support_t>(host, CLAP_EXT_TIMER_SUPPORT) != nullptr &&
           Ui::FaceWindow::HasDisplay();
}

bool Gui::Create(const char* api, bool isFloating) {
    if (isCreated || !IsSupported(api, isFloating))
        return false;
    isCreated = true;
    floats = isFloating;
    size = Ui::FaceWindow::FirstSize(plugin.instrument, scale);
    return true;
}

void Gui::Destroy() {
    StopTimer();
    window.reset();
    isCreated = false;
    transientFor = 0;
}

bool Gui::SetScale(double newScale) {
    if (!(newScale > 0.0) || window != nullptr)
        return false;
    scale = newScale;
    size = Ui::FaceWindow::FirstSize(plugin.instrument, scale);
    return true;
}

Ui::FaceWindow::Size Gui::GetSize() const { return window != nullptr ? window->GetSize() : size; }

bool Gui::SetSize(Ui::FaceWindow::Size wanted) {
    if (!isCreated)
        return false;
    size = wanted;
    if (window != nullptr)
        window->SetSize(size);
    return true;
}

bool Gui::SetParent(const clap_window_t& parent) {
    return isCreated && !floats && window == nullptr && Open(parent.x11);
}

bool Gui::SetTransient(const clap_window_t& parent) {
    transientFor = parent.x11;
    if (window != nullptr)
        window->SetTransientFor(transientFor);
    return isCreated && floats;
}

void Gui::SuggestTitle(const char* newTitle) {
    title = newTitle;
    if (window != nullptr && floats)
        window->SetTitle(title);
}

bool Gui::Show() {
    if (!isCreated || (window == nullptr && (!floats || !Open(0))))
        return false;
    window->Show();
    const auto* const timers = Of<clap_host_timer_support_t>(host, CLAP_EXT_TIMER_SUPPORT);
    return timer != CLAP_INVALID_ID ||
           (timers != nullptr && timers->register_timer(&host, kFrameMilliseconds, &timer));
}

bool Gui::Hide() {
    if (window == nullptr)
        return false;
    window->Hide();
    StopTimer();
    return true;
}

bool Gui::Open(uintptr_t parent) {
    try {
        window = std::make_unique<Ui::FaceWindow>(plugin.instrument, parent, scale, size);
    } catch (const std::exception& error) {
        plugin.Log(kLogError, error.what());
        return false;
    }
    if (floats) {
        window->SetTitle(title);
        if (transientFor != 0)
            window->SetTransientFor(transientFor);
    }
    told = Controls();
    return true;
}

void Gui::StopTimer() {
    const auto* const timers = Of<clap_host_timer_support_t>(host, CLAP_EXT_TIMER_SUPPORT);
    if (timer != CLAP_INVALID_ID && timers != nullptr)
        timers->unregister_timer(&host, timer);
    timer = CLAP_INVALID_ID;
    const auto* const files = Of<HostPosixFd>(host, kPosixFdExtension);
    if (connection >= 0 && files != nullptr)
        files->unregisterFd(&host, connection);
    connection = -1;
}

bool Gui::TakeTimer(clap_id id) {
    if (timer == CLAP_INVALID_ID || id != timer || window == nullptr)
        return false;
    Look();
    return true;
}

void Gui::TakeEvents() {
    if (window != nullptr)
        Look();
}

void Gui::Look() {
    if (window->Idle()) {
        WatchConnection();
        TellHost();
        return;
    }
    window->Hide();
    StopTimer();
    if (const auto* const hostGui = Of<clap_host_gui_t>(host, CLAP_EXT_GUI))
        hostGui->closed(&host, false);
}

/// So that events are taken at once and not with the next frame.
void Gui::WatchConnection() {
    const auto* const files = Of<HostPosixFd>(host, kPosixFdExtension);
    const int wanted = window->Connection();
    if (connection < 0 && wanted >= 0 && files != nullptr &&
        files->registerFd(&host, wanted, kFdReadable))
        connection = wanted;
}

/// What is moved by a gesture goes out with the events; the rest, as a preset from the list, the
/// host is asked to read anew once the hand is off.
void Gui::TellHost() {
    const bool isHeld = window->IsHeld();
    const auto* const params = Of<clap_host_params_t>(host, CLAP_EXT_PARAMS);
    if (isHeld && params != nullptr)
        params->request_flush(&host);
    if (wasHeld && !isHeld && told != Controls()) {
        told = Controls();
        plugin.TellOfNewSound();
    }
    wasHeld = isHeld;
}

std::vector<float> Gui::Controls() const {
    std::vector<float> positions;
    for (const Host::HostControl& control : Host::HostControls())
        positions.push_back(plugin.instrument.ControlPosition(control.id));
    return positions;
}

}  // namespace Quorvan::Clap
