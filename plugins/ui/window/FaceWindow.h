#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/instrument/Instrument.h"

namespace Quorvan::Ui {

/// The face in a window of its own, or in one that a host lends. One thread, which calls Idle some
/// 60 times a second.
class FaceWindow {
public:
    struct Size {
        uint32_t width = 0, height = 0;
    };

    /// Whether there is a display to open windows on.
    static bool HasDisplay();
    /// Size of a new window: the one that the instrument's state keeps, or the face's at a scale.
    static Size FirstSize(const Host::Instrument& instrument, double scale);
    /// The nearest size that the face is made for.
    static Size Fitting(Size wanted);

    /// parent: the host's window (an X11 window id), 0 for a window of its own. The instrument has
    /// to outlive it. Throws std::runtime_error, with a sentence, without a display.
    FaceWindow(Host::Instrument& instrument, uintptr_t parent, double scale, Size size);
    ~FaceWindow();

    /// Takes events and draws what has moved; answers false when the user has closed it.
    bool Idle();
    /// File descriptor that can be read when there are events for Idle; -1 before the first
    /// drawing.
    int Connection() const;
    /// Whether the user holds something of the face, or has let go of it less than a moment ago.
    bool IsHeld() const;
    void Show();
    void Hide();
    void SetTitle(const std::string& title);
    void SetTransientFor(uintptr_t parent);
    void SetSize(Size size);
    Size GetSize() const;

private:
    struct Parts;
    std::unique_ptr<Parts> parts;
};

}  // namespace Quorvan::Ui
