#include "clap/ext/gui.h"
#include "plugins/claphost/Check.h"
// Behind all others, whose names X11 takes for macros.
#include "plugins/claphost/HostWindow.h"

namespace Quorvan::ClapHost {

/// A host's window with a plug-in's in it. Throws where a call fails.
struct Frame : HostWindow {
    Frame(Display* shown, ClapInstance& shownPlugin, double scale = 1.0)
        : HostWindow(shown),
          instance(shownPlugin),
          gui(instance.Get<clap_plugin_gui_t>(CLAP_EXT_GUI)) {
        const clap_plugin_t* const plugin = instance.plugin;
        Require(gui.is_api_supported(plugin, CLAP_WINDOW_API_X11, false) &&
                    gui.create(plugin, CLAP_WINDOW_API_X11, false),
                "The window is not made.");
        gui.set_scale(plugin, scale);
        gui.get_size(plugin, &width, &height);
        clap_window_t parent{};
        parent.api = CLAP_WINDOW_API_X11;
        parent.x11 = window;
        Require(gui.set_parent(plugin, &parent) && gui.show(plugin), "The window does not open.");
        Idle(20);
    }
    ~Frame() {
        gui.hide(instance.plugin);
        gui.destroy(instance.plugin);
    }
    void Idle(uint32_t times) {
        for (uint32_t i = 0; i < times; ++i) {
            usleep(4000);
            instance.RunTimers();
        }
        time += 1000;
    }
    Pixels Look() {
        Require(gui.get_size(instance.plugin, &width, &height), "The window has no size.");
        return HostWindow::Look(static_cast<int>(width), static_cast<int>(height),
                                [&] { instance.RunTimers(); });
    }
    /// modifiers: such as ShiftMask.
    void Drag(int x, int y, int right, int down, unsigned modifiers = 0) {
        constexpr int kSteps = 8;
        Send(ButtonPress, x, y, Button1, modifiers);
        for (int i = 1; i <= kSteps; ++i)
            Send(MotionNotify, x + right * i / kSteps, y + down * i / kSteps, 0,
                 modifiers | Button1Mask);
        Send(ButtonRelease, x + right, y + down, Button1, modifiers | Button1Mask);
    }
    void DoubleClick(int x, int y) {
        for (int i = 0; i < 2; ++i) {
            Send(ButtonPress, x, y, Button1, 0);
            Send(ButtonRelease, x, y, Button1, Button1Mask);
        }
    }
    /// Of the pointer; type as in X11.
    void Send(int type, int x, int y, unsigned button, unsigned state) {
        XEvent event{};
        // A motion's members lie where a button's do.
        event.xbutton = {type,  0,          True, display, Child(), DefaultRootWindow(display),
                         None,  time += 10, x,    y,       x,       y,
                         state, button,     True};
        XSendEvent(display, Child(), True, ButtonPressMask | ButtonReleaseMask | PointerMotionMask,
                   &event);
        XSync(display, False);
    }

    ClapInstance& instance;
    const clap_plugin_gui_t& gui;
    uint32_t width = 0, height = 0;
    Time time = 0;
};

using Face = OnDisplay<With<CLAP_EXT_GUI>>;

TEST_F(Face, ShowsWhatMovesAndTellsTheHostOfGestures) {
    ClapInstance instance(Library());
    instance.Activate();
    Frame frame(display, instance);
    EXPECT_NE(frame.Look(), frame.Look()) << "Sound goes through it, and nothing moves.";
    /// How far a gesture moves a parameter; the host has to hear of it.
    const auto by = [&](size_t parameter, auto gesture) {
        const auto told = instance.eventsTold;
        const double before = instance.Values()[parameter];
        gesture();
        frame.Idle(3);
        const double way = instance.Values()[parameter] - before;
        for (const auto type :
             {CLAP_EVENT_PARAM_GESTURE_BEGIN, CLAP_EVENT_PARAM_VALUE, CLAP_EVENT_PARAM_GESTURE_END})
            EXPECT_GT(instance.eventsTold[type], told[type]) << type;
        return way;
    };
    uint32_t dragged = 0;
    std::set<clap_id> moved;
    // Behind the header the tape, whose heads do not stand still, is left out.
    for (int y = 20; y < static_cast<int>(frame.height); y += y < 40 ? 280 : 40)
        for (int x = 20; x < static_cast<int>(frame.width); x += 40) {
            const std::vector<double> before = instance.Values();
            frame.Send(ButtonPress, x, y, Button4, 0);  // a turn of the wheel, up
            frame.Idle(1);
            const std::vector<double> after = instance.Values();
            std::vector<size_t> fresh;
            for (size_t i = 0; i < after.size(); ++i)
                if (after[i] != before[i] && moved.insert(instance.Parameters()[i].id).second)
                    fresh.push_back(i);
            // A mode moves others along.
            for (const size_t i : fresh) {
                const clap_param_info_t& one = instance.Parameters()[i];
                if (fresh.size() > 1 || (one.flags & CLAP_PARAM_IS_STEPPED) != 0)
                    continue;
                SCOPED_TRACE(one.name);
                const auto reset = [&] { by(i, [&] { frame.DoubleClick(x, y); }); };
                reset();
                EXPECT_NEAR(instance.Values()[i], one.default_value, 1e-6);
                const int right = one.default_value > 0.5 * one.max_value ? -32 : 32;
                const double whole = by(i, [&] { frame.Drag(x, y, right, -right); });
                reset();
                const double fine = by(i, [&] { frame.Drag(x, y, right, -right, ShiftMask); });
                EXPECT_GT(fine / whole, 0.0);
                EXPECT_LT(fine / whole, 0.5);
                ++dragged;
            }
        }
    EXPECT_GT(dragged, 8u) << "The wheel moves hardly anything.";
    frame.Idle(40);
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
            frame.Look();
            EXPECT_TRUE(width == frame.width && height == frame.height) << width;
        }
    }
}

TEST_F(Face, OpensAndClosesManyTimesAndAlongWithOthers) {
    ClapInstance instance(Library()), other(Library());
    Frame beside(display, other);
    double before = 0.0;
    for (uint32_t i = 0; i < options.lives; ++i) {
        Frame frame(display, instance);
        if (i % 10 == 9)  // the host's window goes first
            XDestroyWindow(display, frame.window);
        if (i == options.lives / 10)
            before = ResidentMegabytes();
    }
    EXPECT_LT(ResidentMegabytes() - before, 8.0);
    beside.Look();
}

}  // namespace Quorvan::ClapHost
