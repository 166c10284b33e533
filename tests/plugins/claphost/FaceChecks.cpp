#include <malloc.h>

#include <fstream>
#include <set>

#include "plugins/claphost/Check.h"
// Behind all others, whose names X11 takes for macros.
#include "plugins/claphost/Frame.h"

namespace Quorvan::ClapHost {

namespace {

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

}  // namespace

TEST_F(Face, ShowsWhatMovesAndTellsTheHostOfGestures) {
    ClapInstance instance(Library());
    instance.Activate();
    Frame frame(display, instance);
    const auto first = frame.Pixels();
    EXPECT_GT(Colours(first), 40u) << "The window is empty.";
    frame.Idle(20);
    EXPECT_NE(frame.Pixels(), first) << "Sound goes through it, and nothing moves.";
    /// How far a gesture moves a parameter; the host has to hear of it.
    const auto by = [&](size_t parameter, auto gesture) {
        const auto told = instance.eventsTold;
        const double before = instance.Values()[parameter];
        gesture();
        frame.Idle(3);
        const double way = instance.Values()[parameter] - before;
        for (const auto type : {CLAP_EVENT_PARAM_GESTURE_BEGIN, CLAP_EVENT_PARAM_GESTURE_END})
            EXPECT_GT(instance.eventsTold[type], told[type]) << type;
        EXPECT_GT(instance.eventsTold[CLAP_EVENT_PARAM_VALUE], told[CLAP_EVENT_PARAM_VALUE]);
        return way;
    };
    uint32_t dragged = 0;
    std::set<clap_id> moved;
    // Behind the header the tape, whose heads do not stand still, is left out.
    for (int y = 20; y < static_cast<int>(frame.height); y += y < 40 ? 280 : 40)
        for (int x = 20; x < static_cast<int>(frame.width); x += 40) {
            const std::vector<double> before = instance.Values();
            frame.Wheel(x, y);
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
