#include "travesty/view.h"

#include <unistd.h>

#include <set>

#include "plugins/vst3host/Vst3Instance.h"

// Behind all others, whose names it takes for macros.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace Quorvan::test {
namespace {

v3_timer_handler** timer = nullptr;

/// The host's run loop and the frame around a view, which hands it out.
const v3_run_loop_cpp kLoop{
    {No, One, One},
    {[](void*, v3_event_handler**, int) -> v3_result { return V3_OK; },
     [](void*, v3_event_handler**) -> v3_result { return V3_OK; },
     [](void*, v3_timer_handler** handler, uint64_t) -> v3_result {
         timer = handler;
         return V3_OK;
     },
     [](void*, v3_timer_handler**) -> v3_result {
         timer = nullptr;
         return V3_OK;
     }}};
const void* const loop = &kLoop;
const v3_plugin_frame_cpp kFrame{
    {[](void*, const v3_tuid iid, void** object) -> v3_result {
         *object = v3_tuid_match(iid, v3_run_loop_iid) ? const_cast<const void**>(&loop) : nullptr;
         return *object == nullptr ? V3_NO_INTERFACE : V3_OK;
     },
     One, One},
    {[](void*, v3_plugin_view** view, v3_view_rect* size) -> v3_result {
        return v3_cpp_obj(view)->on_size(view, size);
    }}};

TEST(Vst3ViewTest, OpensInAHostsWindowMovesTakesSizesAndCloses) {
    Display* const display = XOpenDisplay(nullptr);
    if (display == nullptr)
        GTEST_SKIP() << "There is no display.";
    Vst3 vst3;
    const void* frame = &kFrame;
    for (int life = 0; life < 5; ++life) {
        auto** const view = v3_cpp_obj(vst3.controller)->create_view(vst3.controller, "editor");
        v3_view_rect size{};
        v3_cpp_obj(view)->get_size(view, &size);
        EXPECT_EQ(size.right, 1280);
        const Window window = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 1920,
                                                  1200, 0, 0, 0);
        XMapWindow(display, window);
        XSync(display, False);
        v3_cpp_obj(view)->set_frame(view, As<v3_plugin_frame>(&frame));
        ASSERT_EQ(v3_cpp_obj(view)->attached(view, reinterpret_cast<void*>(window),
                                             V3_VIEW_PLATFORM_TYPE_X11),
                  V3_OK);
        const auto look = [&](unsigned width, unsigned height) {
            for (int i = 0; i < 20 && timer != nullptr; ++i) {
                usleep(4000);
                vst3.Run(480);
                v3_cpp_obj(timer)->on_timer(timer);
            }
            std::vector<unsigned long> pixels;
            XImage* const image =
                XGetImage(display, window, 0, 0, width, height, AllPlanes, ZPixmap);
            for (int y = 0; image != nullptr && y < image->height; y += 4)
                for (int x = 0; x < image->width; x += 4)
                    pixels.push_back(XGetPixel(image, x, y));
            XDestroyImage(image);
            return pixels;
        };
        const auto first = look(1280, 800);
        EXPECT_GT(std::set(first.begin(), first.end()).size(), 40u) << "The window is empty.";
        EXPECT_NE(look(1280, 800), first) << "Sound goes through it, and nothing moves.";
        v3_view_rect wide{0, 0, 1600, 1000};
        EXPECT_EQ(v3_cpp_obj(view)->on_size(view, &wide), V3_OK);
        const auto larger = look(1600, 1000);
        const auto corner = std::set(larger.end() - 8000, larger.end());
        EXPECT_GT(corner.size(), 4u) << "Nothing stands where it has grown.";
        EXPECT_EQ(v3_cpp_obj(view)->removed(view), V3_OK);
        EXPECT_EQ(timer, nullptr);
        v3_cpp_obj_unref(view);
        XDestroyWindow(display, window);
    }
    XCloseDisplay(display);
}

}  // namespace
}  // namespace Quorvan::test
