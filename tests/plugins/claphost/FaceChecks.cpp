#include <malloc.h>
#include <unistd.h>

#include <fstream>
#include <memory>
#include <set>

#include "clap/ext/gui.h"
#include "plugins/claphost/Check.h"

// Behind all others, whose names it takes for macros.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace Quorvan::ClapHost {

namespace {

/// A host's window with a plug-in's in it. Throws where a call fails.
class Frame {
public:
    Frame(Display* shown, ClapInstance& shownPlugin, double scale = 1.0)
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
        Idle(20);
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
    /// What is shown; each pixel as a number.
    std::vector<unsigned long> Pixels() const {
        XImage* const image = XGetImage(display, Child(), 0, 0, width, height, AllPlanes, ZPixmap);
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
        XEvent event{};
        event.xbutton = {.type = ButtonPress,
                         .serial = 0,
                         .send_event = True,
                         .display = display,
                         .window = Child(),
                         .root = DefaultRootWindow(display),
                         .subwindow = None,
                         .time = ++time * 1000,
                         .x = x,
                         .y = y,
                         .x_root = x,
                         .y_root = y,
                         .state = 0,
                         .button = Button4,
                         .same_screen = True};
        XSendEvent(display, Child(), True, ButtonPressMask, &event);
        XSync(display, False);
    }

    Display* display;
    ClapInstance& instance;
    const clap_plugin_gui_t& gui;
    uint32_t width = 0, height = 0;
    Window window = 0;
    Time time = 0;
};

/// Of a display, where there is one and the plug-in has a face.
class Face : public Check {
    void SetUp() override {
        display = XOpenDisplay(nullptr);
        if (display == nullptr || !Has(CLAP_EXT_GUI))
            GTEST_SKIP() << "There is no display, or the plug-in has no face.";
        XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });  // as hosts' toolkits do
    }

protected:
    ~Face() override {
        if (display != nullptr)
            XCloseDisplay(display);
    }
    Display* display = nullptr;
};

size_t Colours(const std::vector<unsigned long>& pixels) {
    return std::set<unsigned long>(pixels.begin(), pixels.end()).size();
}

}  // namespace

TEST_F(Face, ShowsWhatMovesAndTakesTheWheel) {
    ClapInstance instance(Library());
    instance.Activate();
    Frame frame(display, instance);
    const auto first = frame.Pixels();
    EXPECT_GT(Colours(first), 40u) << "The window is empty.";
    frame.Idle(20);
    EXPECT_NE(frame.Pixels(), first) << "Sound goes through it, and nothing moves.";
    std::set<clap_id> moved;
    for (int y = 20; y < static_cast<int>(frame.height); y += 40)
        for (int x = 20; x < static_cast<int>(frame.width); x += 40) {
            const std::vector<double> before = instance.Values();
            frame.Wheel(x, y);
            frame.Idle(1);
            const std::vector<double> after = instance.Values();
            for (size_t i = 0; i < after.size(); ++i)
                if (after[i] != before[i])
                    moved.insert(instance.Parameters()[i].id);
        }
    EXPECT_GT(moved.size(), 8u) << "The wheel moves hardly anything.";
    frame.Idle(40);
    EXPECT_GE(instance.eventsTold[CLAP_EVENT_PARAM_VALUE], moved.size());
    EXPECT_GE(instance.eventsTold[CLAP_EVENT_PARAM_GESTURE_BEGIN], moved.size());
    EXPECT_EQ(instance.eventsTold[CLAP_EVENT_PARAM_GESTURE_BEGIN],
              instance.eventsTold[CLAP_EVENT_PARAM_GESTURE_END]);
}

TEST_F(Face, TakesTheSizesAndScalesOfItsHost) {
    for (const double scale : {1.0, 2.0}) {
        ClapInstance instance(Library());
        Frame frame(display, instance, scale);
        EXPECT_EQ(frame.width, static_cast<uint32_t>(1280 * scale));
        for (auto [width, height] : {std::pair(1000u, 2000u), std::pair(1600u, 1000u)}) {
            frame.gui.adjust_size(instance.plugin, &width, &height);
            EXPECT_NEAR(1.6, static_cast<double>(width) / height, 0.01);
            EXPECT_TRUE(frame.gui.set_size(instance.plugin, width, height));
            frame.Idle(20);
            uint32_t now[2]{};
            frame.gui.get_size(instance.plugin, &now[0], &now[1]);
            EXPECT_EQ(now[0], width);
            EXPECT_EQ(now[1], height);
            frame.width = width;
            frame.height = height;
            EXPECT_GT(Colours(frame.Pixels()), 20u) << width;
        }
    }
}

TEST_F(Face, OpensAndClosesManyTimesAndAlongWithOthers) {
    ClapInstance instance(Library()), other(Library());
    Frame beside(display, other);
    const auto megabytes = [] {
        malloc_trim(0);
        double all = 0.0, resident = 0.0;
        std::ifstream("/proc/self/statm") >> all >> resident;
        return resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1048576.0;
    };
    double before = 0.0;
    for (uint32_t i = 0; i < options.lives; ++i) {
        Frame frame(display, instance);
        if (i % 10 == 9)  // the host's window goes first
            XDestroyWindow(display, frame.window);
        if (i == options.lives / 10)
            before = megabytes();
    }
    EXPECT_LT(megabytes() - before, 8.0);
    beside.Idle(10);
    EXPECT_GT(Colours(beside.Pixels()), 20u);
}

}  // namespace Quorvan::ClapHost
