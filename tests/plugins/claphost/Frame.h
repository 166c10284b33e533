#pragma once

#include <unistd.h>

#include <set>
#include <vector>

#include "clap/ext/gui.h"
#include "plugins/claphost/ClapInstance.h"

// Behind all others, whose names it takes for macros.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace Quorvan::ClapHost {

/// A host's window with a plug-in's in it. Throws where a call fails.
class Frame {
public:
    /// looks: how often the plug-in's timers have run when it stands.
    Frame(Display* shown, ClapInstance& shownPlugin, double scale = 1.0, uint32_t looks = 20)
        : display(shown),
          instance(shownPlugin),
          gui(instance.Get<clap_plugin_gui_t>(CLAP_EXT_GUI)) {
        const clap_plugin_t* const plugin = instance.plugin;
        Require(gui.is_api_supported(plugin, CLAP_WINDOW_API_X11, false),
                "There is no X11 window.");
        Require(gui.create(plugin, CLAP_WINDOW_API_X11, false), "The window is not made.");
        gui.set_scale(plugin, scale);
        Require(gui.get_size(plugin, &width, &height), "The window has no size.");
        window =
            XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, width, height, 0, 0, 0);
        XMapWindow(display, window);
        XSync(display, False);
        clap_window_t parent{};
        parent.api = CLAP_WINDOW_API_X11;
        parent.x11 = window;
        Require(gui.set_parent(plugin, &parent) && gui.show(plugin), "The window does not open.");
        Idle(looks);
    }
    ~Frame() {
        gui.hide(instance.plugin);
        gui.destroy(instance.plugin);
        XDestroyWindow(display, window);
        XSync(display, False);
    }
    void Idle(uint32_t times) {
        for (uint32_t i = 0; i < times; ++i) {
            usleep(4000);
            instance.RunTimers(1);
        }
    }
    Window Child() const {
        Window root = 0, parent = 0, *children = nullptr;
        unsigned count = 0;
        XQueryTree(display, window, &root, &parent, &children, &count);
        Require(count == 1, "The host's window holds not one of the plug-in's.");
        const Window child = children[0];
        XFree(children);
        return child;
    }
    /// What is shown; each fourth pixel of each fourth row as a number.
    std::vector<unsigned long> Pixels() const { return Pixels(width, height); }
    /// The same of the upper left.
    std::vector<unsigned long> Pixels(uint32_t wide, uint32_t high) const {
        XImage* const image = XGetImage(display, Child(), 0, 0, wide, high, AllPlanes, ZPixmap);
        Require(image != nullptr, "The window can't be read.");
        std::vector<unsigned long> pixels;
        for (int y = 0; y < image->height; y += 4)
            for (int x = 0; x < image->width; x += 4)
                pixels.push_back(XGetPixel(image, x, y));
        XDestroyImage(image);
        return pixels;
    }
    /// A turn of the wheel, up, at a place.
    void Wheel(int x, int y) {
        time += 1000;
        Send(ButtonPress, x, y, Button4, 0);
    }
    /// modifiers: such as ShiftMask.
    void Drag(int x, int y, int right, int down, unsigned modifiers = 0) {
        constexpr int kSteps = 8;
        time += 1000;
        Send(ButtonPress, x, y, Button1, modifiers);
        for (int i = 1; i <= kSteps; ++i)
            Send(MotionNotify, x + right * i / kSteps, y + down * i / kSteps, 0,
                 modifiers | Button1Mask);
        Send(ButtonRelease, x + right, y + down, Button1, modifiers | Button1Mask);
    }
    void DoubleClick(int x, int y) {
        time += 1000;
        for (int i = 0; i < 2; ++i) {
            Send(ButtonPress, x, y, Button1, 0);
            Send(ButtonRelease, x, y, Button1, Button1Mask);
        }
    }
    /// Of the pointer; type as in X11.
    void Send(int type, int x, int y, unsigned button, unsigned state) {
        XEvent event{};
        event.xbutton = {.type = type,
                         .serial = 0,
                         .send_event = True,
                         .display = display,
                         .window = Child(),
                         .root = DefaultRootWindow(display),
                         .subwindow = None,
                         .time = time += 10,
                         .x = x,
                         .y = y,
                         .x_root = x,
                         .y_root = y,
                         .state = state,
                         .button = button,
                         .same_screen = True};
        if (type == MotionNotify) {
            event.xmotion.is_hint = NotifyNormal;
            event.xmotion.same_screen = True;
        }
        XSendEvent(display, Child(), True, ButtonPressMask | ButtonReleaseMask | PointerMotionMask,
                   &event);
        XSync(display, False);
    }

    Display* display;
    ClapInstance& instance;
    const clap_plugin_gui_t& gui;
    uint32_t width = 0, height = 0;
    Window window = 0;
    Time time = 0;
};

inline size_t Colours(const std::vector<unsigned long>& pixels) {
    return std::set<unsigned long>(pixels.begin(), pixels.end()).size();
}

}  // namespace Quorvan::ClapHost
