#include "plugins/ui/window/FaceWindow.h"

#include <X11/Xlib.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "Application.hpp"
#include "Window.hpp"
#include "host/parameters/SharedCatalog.h"
#include "plugins/ui/window/FaceWidget.h"
#include "presets/FactoryPresets.h"

namespace Quorvan::Ui {

namespace {

using Widget = FaceWidget<Toolkit::CairoTopLevelWidget>;

/// A window that its user closes is hidden and says so, nothing more.
class Shell final : public Toolkit::Window {
public:
    using Toolkit::Window::Window;

    bool isClosed = false;

private:
    bool onClose() override {
        isClosed = true;
        return true;
    }
};

}  // namespace

struct FaceWindow::Parts {
    Parts(Host::Instrument& played, uintptr_t parent, double scale, Size size)
        : instrument(played),
          application(parent == 0),
          shell(application, parent, size.width, size.height, scale, true),
          widget(
              [this](Toolkit::CairoTopLevelWidget&) -> Host::Instrument& { return instrument; },
              {Host::SharedCatalog(), Host::FactoryPresets(), Host::PresetLibrary::UsualFolder()},
              shell) {
        const auto least = [](int length) {
            return static_cast<unsigned>(std::ceil(length * Face::kSmallest));
        };
        shell.setGeometryConstraints(least(Face::kWidth), least(Face::kHeight), true);
        widget.setSize(size.width, size.height);
    }

    Host::Instrument& instrument;
    Toolkit::Application application;
    Shell shell;
    Widget widget;
};

bool FaceWindow::HasDisplay() {
    Display* const display = XOpenDisplay(nullptr);
    if (display != nullptr)
        XCloseDisplay(display);
    return display != nullptr;
}

FaceWindow::Size FaceWindow::FirstSize(const Host::Instrument& instrument, double scale) {
    const Host::WindowSize kept = instrument.GetWindowSize();
    if (kept.width > 0 && kept.height > 0)
        return Fitting({kept.width, kept.height});
    const double held = std::clamp(scale, Face::kSmallest, Face::kLargest);
    return {static_cast<uint32_t>(std::lround(Face::kWidth * held)),
            static_cast<uint32_t>(std::lround(Face::kHeight * held))};
}

FaceWindow::Size FaceWindow::Fitting(Size wanted) {
    const double scale = std::clamp(std::min(wanted.width / static_cast<double>(Face::kWidth),
                                             wanted.height / static_cast<double>(Face::kHeight)),
                                    Face::kSmallest, Face::kLargest);
    return {static_cast<uint32_t>(std::lround(Face::kWidth * scale)),
            static_cast<uint32_t>(std::lround(Face::kHeight * scale))};
}

FaceWindow::FaceWindow(Host::Instrument& instrument, uintptr_t parent, double scale, Size size) {
    if (!HasDisplay())
        throw std::runtime_error("There is no display to open a window on.");
    parts = std::make_unique<Parts>(instrument, parent, scale, size);
    if (parent == 0)
        parts->shell.setTitle("Tesserae");
}

/// The toolkit complains about windows that are still open when it ends.
FaceWindow::~FaceWindow() { parts->shell.close(); }

bool FaceWindow::Idle() {
    parts->widget.Look();
    parts->application.idle();
    const Size now = GetSize();
    const Host::WindowSize size{now.width, now.height};
    if (parts->shell.isVisible() && size != parts->instrument.GetWindowSize())
        parts->instrument.SetWindowSize(size);
    return !parts->shell.isClosed;
}

int FaceWindow::Connection() const { return parts->widget.Connection(); }
bool FaceWindow::IsHeld() const { return parts->widget.IsHeld(); }
void FaceWindow::Show() { parts->shell.show(); }
void FaceWindow::Hide() { parts->shell.hide(); }
void FaceWindow::SetTitle(const std::string& title) { parts->shell.setTitle(title.c_str()); }
void FaceWindow::SetTransientFor(uintptr_t parent) { parts->shell.setTransientParent(parent); }
void FaceWindow::SetSize(Size size) { parts->shell.setSize(size.width, size.height); }
FaceWindow::Size FaceWindow::GetSize() const {
    return {parts->shell.getWidth(), parts->shell.getHeight()};
}

}  // namespace Quorvan::Ui
