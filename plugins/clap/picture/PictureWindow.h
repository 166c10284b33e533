#pragma once

#include <string>

#include "plugins/clap/picture/PictureHost.h"

// Behind all others, whose names it takes for macros.
#include <X11/Xlib.h>

namespace Quorvan::Clap {

/// A host's window with the plug-in's in it. Throws std::runtime_error, with a sentence, where it
/// does not come.
class PictureWindow {
public:
    PictureWindow(const PictureHost& host, double scale);
    ~PictureWindow();
    PictureWindow(const PictureWindow&) = delete;
    PictureWindow& operator=(const PictureWindow&) = delete;

    /// The left button at a place of the plug-in's window.
    void Click(int x, int y);
    /// The pointer is nowhere any more.
    void Leave();
    /// Writes what is shown to a PNG.
    void Save(const std::string& file) const;

private:
    /// Of the pointer; type as in X11.
    void Send(int type, int x, int y, unsigned button, unsigned state);
    Window Inner() const;

    const PictureHost& host;
    Display* display;
    Window outer = 0;
    uint32_t width = 0, height = 0;
    Time time = 1000;
};

}  // namespace Quorvan::Clap
