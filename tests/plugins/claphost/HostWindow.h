#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <set>
#include <vector>

#include "plugins/claphost/ClapLibrary.h"
// Behind all others, whose names it takes for macros.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace Quorvan::ClapHost {

using Pixels = std::vector<unsigned long>;
inline size_t Colours(const Pixels& pixels) {
    return std::set(pixels.begin(), pixels.end()).size();
}

/// Checks that need a display.
template <class Base>
struct OnDisplay : Base {
    void SetUp() override {
        Base::SetUp();
        if (display == nullptr)
            GTEST_SKIP() << "There is no display.";
        XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });  // as hosts' toolkits do
    }
    ~OnDisplay() override {
        if (display != nullptr)
            XCloseDisplay(display);
    }
    Display* const display = XOpenDisplay(nullptr);
};

/// A host's window, and what a plug-in shows in it. Throws where a call fails.
struct HostWindow {
    explicit HostWindow(Display* shown) : display(shown) {
        XMapWindow(display, window);
        XSync(display, False);
    }
    ~HostWindow() {
        XDestroyWindow(display, window);
        XSync(display, False);
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
    /// What the plug-in shows after the host's idle calls, which has to fill this size; each fourth
    /// pixel of each fourth row.
    template <class Idle>
    Pixels Look(int width, int height, Idle idle) const {
        for (int i = 0; i < 20; ++i) {
            usleep(4000);
            idle();
        }
        XWindowAttributes is{};
        XGetWindowAttributes(display, Child(), &is);
        EXPECT_TRUE(is.width == width && is.height == height) << is.width << " x " << is.height;
        XImage* const image = XGetImage(display, Child(), 0, 0, static_cast<unsigned>(width),
                                        static_cast<unsigned>(height), AllPlanes, ZPixmap);
        Require(image != nullptr, "The window can't be read.");
        Pixels pixels;
        for (int y = 0; y < image->height; y += 4)
            for (int x = 0; x < image->width; x += 4)
                pixels.push_back(XGetPixel(image, x, y));
        XDestroyImage(image);
        EXPECT_GT(Colours(pixels), 40u) << "The window is empty.";
        EXPECT_GT(Colours({pixels.end() - 8000, pixels.end()}), 4u) << "So is its bottom.";
        return pixels;
    }

    Display* display;
    Window window =
        XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 2560, 1600, 0, 0, 0);
};

}  // namespace Quorvan::ClapHost
